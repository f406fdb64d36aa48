#pragma once

#include "irsdk/layout.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <string_view>

namespace publisher {

/** What is to be known of a block before it can be laid out. */
struct BlockFacts {
    int tickRate = 60;
    int bufferCount = 3;
    std::size_t bufferLength = 0;
    std::size_t textRoom = std::size_t{256} * 1024;
    std::size_t textAreas = 2;  // a new text goes to the next one
    std::size_t padding = 0;    // unused bytes before the ring and after each of its buffers
    std::size_t leastSize = 0;  // of the whole block
};

/** Where the parts of a block lie. */
struct BlockLayout {
    BlockLayout(const BlockFacts& facts, std::size_t variableCount);

    /** Writes what stays the same: header, offsets of the buffers, table. */
    void write(std::span<std::byte> block, std::span<const irsdk_varHeader> table) const;

    [[nodiscard]] std::size_t textOffset(std::size_t area) const {
        return firstTextOffset + area * facts.textRoom;
    }

    BlockFacts facts;
    std::size_t tableOffset;
    std::size_t firstTextOffset;
    std::size_t firstBufferOffset;
    std::size_t bufferSpacing;
    std::size_t size;  // of the whole block
};

/** Tick count of a buffer that must not be taken: smaller than any other, so never the newest. */
inline constexpr std::int32_t kNeverNewest = std::numeric_limits<std::int32_t>::min();

[[nodiscard]] irsdk_header& headerOf(std::span<std::byte> block);

/** The descriptor of a buffer, which lies inside the block. */
[[nodiscard]] irsdk_varBuf& descriptorOf(std::span<std::byte> block, int buffer);

/** Writes a word that another process reads, in one piece and after all that was written before. */
void store(std::int32_t& word, std::int32_t value);

/**
 * Puts a snapshot into a buffer, which lies inside the block, so that readers can copy from it at
 * any moment: the buffer is marked before its payload changes and gets its count afterwards. A
 * reader that finds the same count before and after its copy has a whole snapshot.
 */
void overwriteBuffer(std::span<std::byte> block, int buffer, std::span<const std::byte> snapshot,
                     std::int32_t tickCount);

/**
 * Writes a block so that readers in other processes can copy from it at any moment.
 *
 * The snapshots go round the ring. The session text has two areas: a new text goes to the one that
 * is not shown, then the header points there and the update counter moves on. A reader whose
 * counter is still the same after its copy has a whole text.
 */
class BlockWriter {
public:
    /** `block` holds at least `layout.size` bytes, aligned as a page is, and outlives this. */
    BlockWriter(std::span<std::byte> block, const BlockLayout& layout,
                std::span<const irsdk_varHeader> table);

    /** Shows `text`, cut at the end of a line if there is no room for all of it. */
    void showText(std::string_view text);

    /** Puts `snapshot`, of the buffers' length, into the next buffer of the ring. */
    void publish(std::span<const std::byte> snapshot);

    /** Sets or clears the status bit that says the data are valid. */
    void setRunning(bool running);

    /** Tick count of the newest snapshot; 0 before the first. */
    [[nodiscard]] std::int32_t tickCount() const { return m_tickCount; }

private:
    std::span<std::byte> m_block;
    BlockLayout m_layout;
    std::int32_t m_tickCount = 0;
    std::int32_t m_textUpdates = 0;
};

}  // namespace publisher
