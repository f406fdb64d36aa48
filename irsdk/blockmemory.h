#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace irsdk {

/**
 * The mapped bytes of the block and the one place that knows what lies inside them. Whatever
 * follows an offset, a count or a length of the block asks here first; arguments are taken as the
 * block states them and may be anything.
 */
class BlockMemory {
public:
    BlockMemory() = default;
    BlockMemory(const char* base, std::size_t size)
        : m_base(base), m_size(static_cast<std::int64_t>(size)) {}

    [[nodiscard]] std::int64_t size() const { return m_size; }

    /** Whether `length` bytes from `offset` on lie inside the block. */
    [[nodiscard]] bool holds(std::int64_t offset, std::int64_t length) const {
        return offset >= 0 && length >= 0 && offset <= m_size && length <= m_size - offset;
    }

    /**
     * How many of `count` entries of `entrySize` bytes from `offset` on lie inside, counted from
     * the first.
     */
    [[nodiscard]] std::int64_t entriesHeld(std::int64_t offset, std::int64_t count,
                                           std::size_t entrySize) const {
        if (count <= 0 || !holds(offset, 0)) {
            return 0;
        }
        const std::int64_t fitting = (m_size - offset) / static_cast<std::int64_t>(entrySize);
        return count < fitting ? count : fitting;
    }

    /**
     * Bytes before the first zero byte from `offset` on, or up to the end; `offset` lies inside.
     */
    [[nodiscard]] std::size_t textLength(std::int64_t offset) const {
        const auto room = static_cast<std::size_t>(m_size - offset);
        const void* end = std::memchr(at(offset), '\0', room);
        return end == nullptr
                   ? room
                   : static_cast<std::size_t>(static_cast<const char*>(end) - at(offset));
    }

    /** Address of a byte that lies inside, or of the end. */
    [[nodiscard]] const char* at(std::int64_t offset) const { return m_base + offset; }

    /**
     * Reads an aligned 32-bit integer that lies inside, exactly once. An atomic load is a read that
     * the compiler may neither leave out nor repeat nor merge with another one; acquire order keeps
     * every later read of this thread, in the machine too, behind it.
     */
    [[nodiscard]] std::int32_t read(std::int64_t offset) const {
        // atomic_ref takes no pointer to const before C++26; a lock-free load writes nothing.
        static_assert(std::atomic_ref<std::int32_t>::is_always_lock_free);
        auto* field = reinterpret_cast<std::int32_t*>(const_cast<char*>(at(offset)));
        return std::atomic_ref<std::int32_t>(*field).load(std::memory_order_acquire);
    }

private:
    const char* m_base = nullptr;
    std::int64_t m_size = 0;
};

}  // namespace irsdk
