#pragma once

#include <cstddef>
#include <cstdint>

namespace irsdk {

/**
 * Where the block is mapped, and the one place that knows what lies inside it. Whatever follows an
 * offset, a count or a length of the block asks here first; arguments are taken as the block states
 * them and may be anything. The mapped bytes themselves are for the pointers that the link hands
 * out; the link reads by BlockObject::read().
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

    /** Address of a byte that lies inside, or of the end. */
    [[nodiscard]] const char* at(std::int64_t offset) const { return m_base + offset; }

private:
    const char* m_base = nullptr;
    std::int64_t m_size = 0;
};

}  // namespace irsdk
