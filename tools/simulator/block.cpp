#include "tools/simulator/block.h"

#include "tools/simulator/clock.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <limits>

namespace simulator {

namespace {

constexpr std::int32_t kFormatVersion = 2;
constexpr std::size_t kAlignment = 64;
constexpr std::size_t kTextRoom = std::size_t{256} * 1024;

// Runs with the usual options all have a block of this size: where a reader still holds the block
// of an earlier run, Windows hands out that very block again.
constexpr std::size_t kUsualSize = std::size_t{1024} * 1024;

// Tick count of a buffer that must not be taken: smaller than any other, so never the newest.
constexpr std::int32_t kNeverNewest = std::numeric_limits<std::int32_t>::min();

std::size_t aligned(std::size_t offset) {
    return (offset + kAlignment - 1) / kAlignment * kAlignment;
}

std::int32_t int32Of(std::size_t value) {
    return static_cast<std::int32_t>(value);
}

void copyText(char* to, std::size_t room, const std::string& text) {
    std::copy_n(text.begin(), std::min(room, text.size()), to);
}

// Another process reads these words, so each is stored in one piece.
void store(std::int32_t& word, std::int32_t value, std::memory_order order) {
    std::atomic_ref<std::int32_t>(word).store(value, order);
}

}  // namespace

BlockLayout::BlockLayout(const VariableTable& table, const Options& options)
    : bufferCount(options.bufferCount),
      tableOffset(aligned(offsetof(irsdk_header, varBuf) +
                          static_cast<std::size_t>(options.bufferCount) * sizeof(irsdk_varBuf))),
      textOffsets{},
      textRoom(kTextRoom),
      firstBufferOffset(0),
      bufferSpacing(0),
      bufferLength(table.bufferLength()),
      size(0) {
    const auto padding = static_cast<std::size_t>(options.padBuffer);
    textOffsets[0] = aligned(tableOffset + table.variables().size() * sizeof(irsdk_varHeader));
    textOffsets[1] = textOffsets[0] + textRoom;
    firstBufferOffset = aligned(textOffsets[1] + textRoom + padding);
    bufferSpacing = aligned(bufferLength + padding);
    size = std::max(kUsualSize,
                    firstBufferOffset + static_cast<std::size_t>(bufferCount) * bufferSpacing);
}

Block::Block(std::span<std::byte> memory, const BlockLayout& layout, const VariableTable& table)
    : m_memory(memory), m_layout(layout) {
    // The memory may still be that of an earlier run with its status bit set.
    setRunning(false);
    irsdk_header& head = header();
    head.version = kFormatVersion;
    head.tickRate = kTicksPerSecond;
    // A reader that stayed sees a new text whatever its last counter was.
    m_textUpdates = head.sessionInfoUpdate;
    head.sessionInfoLength = int32Of(layout.textRoom);
    head.sessionInfoOffset = int32Of(layout.textOffsets[0]);
    head.numVars = int32Of(table.variables().size());
    head.varHeaderOffset = int32Of(layout.tableOffset);
    head.numBuf = layout.bufferCount;
    head.bufferLength = int32Of(layout.bufferLength);
    for (int index = 0; index < layout.bufferCount; ++index) {
        store(descriptor(index).tickCount, kNeverNewest, std::memory_order_relaxed);
        descriptor(index).bufferOffset = int32Of(
            layout.firstBufferOffset + static_cast<std::size_t>(index) * layout.bufferSpacing);
    }
    writeTable(table);
}

void Block::showText(const std::string& text) {
    ++m_textUpdates;
    const std::size_t offset = m_layout.textOffsets[static_cast<std::size_t>(m_textUpdates & 1)];
    std::size_t length = text.size();
    if (length >= m_layout.textRoom) {
        length = text.rfind('\n', m_layout.textRoom - 2) + 1;
    }
    // A reader may still copy from this area while it changes: it must not see the new bytes before
    // the counter that has already moved on from the text that it copies.
    std::atomic_thread_fence(std::memory_order_release);
    std::memcpy(m_memory.data() + offset, text.data(), length);
    m_memory[offset + length] = std::byte{0};
    store(header().sessionInfoOffset, int32Of(offset), std::memory_order_release);
    store(header().sessionInfoUpdate, m_textUpdates, std::memory_order_release);
}

void Block::publish(std::span<const std::byte> snapshot) {
    ++m_tickCount;
    irsdk_varBuf& buffer = descriptor(m_tickCount % m_layout.bufferCount);
    store(buffer.tickCount, kNeverNewest, std::memory_order_relaxed);
    // No byte of the payload may become visible before the mark.
    std::atomic_thread_fence(std::memory_order_release);
    std::memcpy(m_memory.data() + buffer.bufferOffset, snapshot.data(), snapshot.size());
    store(buffer.tickCount, m_tickCount, std::memory_order_release);
}

void Block::setRunning(bool running) {
    store(header().status, running ? irsdk_stConnected : 0, std::memory_order_release);
}

irsdk_varBuf& Block::descriptor(int index) {
    return *reinterpret_cast<irsdk_varBuf*>(m_memory.data() + offsetof(irsdk_header, varBuf) +
                                            static_cast<std::size_t>(index) * sizeof(irsdk_varBuf));
}

void Block::writeTable(const VariableTable& table) {
    std::size_t offset = m_layout.tableOffset;
    for (const Variable& variable : table.variables()) {
        irsdk_varHeader entry{};
        entry.type = variable.type;
        entry.offset = int32Of(variable.offset);
        entry.count = variable.count;
        entry.countAsTime = variable.countAsTime ? 1 : 0;
        copyText(entry.name, sizeof entry.name, variable.name);
        // These two always end with a zero.
        copyText(entry.desc, sizeof entry.desc - 1, variable.description);
        copyText(entry.unit, sizeof entry.unit - 1, variable.unit);
        std::memcpy(m_memory.data() + offset, &entry, sizeof entry);
        offset += sizeof entry;
    }
}

}  // namespace simulator
