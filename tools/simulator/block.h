#pragma once

#include "irsdk/layout.h"
#include "tools/simulator/variabletable.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace simulator {

/** Where the parts of the block lie. */
struct BlockLayout {
    BlockLayout(const VariableTable& table, const Options& options);

    int bufferCount;
    std::size_t tableOffset;
    std::size_t textOffsets[2];
    std::size_t textRoom;
    std::size_t firstBufferOffset;
    std::size_t bufferSpacing;
    std::size_t bufferLength;
    std::size_t size;  // of the whole block
};

/**
 * Writes the shared-memory block so that readers in other processes can copy from it at any moment.
 *
 * A buffer's descriptor is marked before its payload changes and gets the new tick afterwards, so a
 * reader that finds the same tick before and after its copy has a whole snapshot. The session text
 * has two areas: a new text goes to the one that is not shown, then the header points there and the
 * update counter moves on. A reader whose counter is still the same after its copy has a whole
 * text.
 */
class Block {
public:
    /** `memory` holds at least `layout.size` bytes, aligned as a page is, and outlives this. */
    Block(std::span<std::byte> memory, const BlockLayout& layout, const VariableTable& table);

    /** Shows `text`, cut at the end of a line if there is no room for all of it. */
    void showText(const std::string& text);

    /** Puts `snapshot`, of the table's buffer length, into the next buffer of the ring. */
    void publish(std::span<const std::byte> snapshot);

    /** Sets or clears the status bit that says the data are valid. */
    void setRunning(bool running);

    /** Tick count of the newest snapshot; 0 before the first. */
    std::int32_t tickCount() const { return m_tickCount; }

private:
    irsdk_header& header() { return *reinterpret_cast<irsdk_header*>(m_memory.data()); }
    irsdk_varBuf& descriptor(int index);
    void writeTable(const VariableTable& table);

    std::span<std::byte> m_memory;
    BlockLayout m_layout;
    std::int32_t m_tickCount = 0;
    std::int32_t m_textUpdates = 0;
};

}  // namespace simulator
