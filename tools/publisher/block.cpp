#include "tools/publisher/block.h"

#include <algorithm>
#include <atomic>
#include <cstring>

namespace publisher {

namespace {

constexpr std::int32_t kFormatVersion = 2;
constexpr std::size_t kAlignment = 64;

std::size_t aligned(std::size_t offset) {
    return (offset + kAlignment - 1) / kAlignment * kAlignment;
}

std::int32_t int32Of(std::size_t value) {
    return static_cast<std::int32_t>(value);
}

}  // namespace

BlockLayout::BlockLayout(const BlockFacts& blockFacts, std::size_t variableCount)
    : facts(blockFacts),
      tableOffset(aligned(static_cast<std::size_t>(irsdk_varBufOffset(facts.bufferCount)))),
      firstTextOffset(aligned(tableOffset + variableCount * sizeof(irsdk_varHeader))),
      firstBufferOffset(aligned(textOffset(facts.textAreas) + facts.padding)),
      bufferSpacing(aligned(facts.bufferLength + facts.padding)),
      size(std::max(
          facts.leastSize,
          firstBufferOffset + static_cast<std::size_t>(facts.bufferCount) * bufferSpacing)) {}

void BlockLayout::write(std::span<std::byte> block, std::span<const irsdk_varHeader> table) const {
    irsdk_header& header = headerOf(block);
    header.version = kFormatVersion;
    header.tickRate = facts.tickRate;
    header.sessionInfoLength = int32Of(facts.textRoom);
    header.sessionInfoOffset = int32Of(textOffset(0));
    header.numVars = int32Of(table.size());
    header.varHeaderOffset = int32Of(tableOffset);
    header.numBuf = facts.bufferCount;
    header.bufferLength = int32Of(facts.bufferLength);
    for (int buffer = 0; buffer < facts.bufferCount; ++buffer) {
        descriptorOf(block, buffer).bufferOffset =
            int32Of(firstBufferOffset + static_cast<std::size_t>(buffer) * bufferSpacing);
    }
    std::ranges::copy(std::as_bytes(table), block.begin() + int32Of(tableOffset));
}

irsdk_header& headerOf(std::span<std::byte> block) {
    return *reinterpret_cast<irsdk_header*>(block.data());
}

irsdk_varBuf& descriptorOf(std::span<std::byte> block, int buffer) {
    return *reinterpret_cast<irsdk_varBuf*>(block.data() + irsdk_varBufOffset(buffer));
}

void store(std::int32_t& word, std::int32_t value) {
    std::atomic_ref<std::int32_t>(word).store(value, std::memory_order_release);
}

void overwriteBuffer(std::span<std::byte> block, int buffer, std::span<const std::byte> snapshot,
                     std::int32_t tickCount) {
    irsdk_varBuf& descriptor = descriptorOf(block, buffer);
    store(descriptor.tickCount, kNeverNewest);
    // No byte of the payload may become visible before the mark.
    std::atomic_thread_fence(std::memory_order_release);
    std::ranges::copy(snapshot, block.begin() + descriptor.bufferOffset);
    store(descriptor.tickCount, tickCount);
}

BlockWriter::BlockWriter(std::span<std::byte> block, const BlockLayout& layout,
                         std::span<const irsdk_varHeader> table)
    : m_block(block), m_layout(layout) {
    // The memory may still be that of an earlier run with its status bit set.
    setRunning(false);
    // A reader that stayed sees a new text whatever its last counter was.
    m_textUpdates = headerOf(block).sessionInfoUpdate;
    for (int buffer = 0; buffer < layout.facts.bufferCount; ++buffer) {
        store(descriptorOf(block, buffer).tickCount, kNeverNewest);
    }
    layout.write(block, table);
}

void BlockWriter::showText(std::string_view text) {
    m_textUpdates = static_cast<std::int32_t>(static_cast<std::uint32_t>(m_textUpdates) + 1U);
    const std::size_t area = static_cast<std::uint32_t>(m_textUpdates) % m_layout.facts.textAreas;
    const std::size_t offset = m_layout.textOffset(area);
    if (text.size() >= m_layout.facts.textRoom) {
        text = text.substr(0, text.rfind('\n', m_layout.facts.textRoom - 2) + 1);
    }
    // A reader may still copy from this area while it changes: it must not see the new bytes before
    // the counter that has already moved on from the text that it copies.
    std::atomic_thread_fence(std::memory_order_release);
    std::memcpy(m_block.data() + offset, text.data(), text.size());
    m_block[offset + text.size()] = std::byte{0};
    store(headerOf(m_block).sessionInfoOffset, int32Of(offset));
    store(headerOf(m_block).sessionInfoUpdate, m_textUpdates);
}

void BlockWriter::publish(std::span<const std::byte> snapshot) {
    ++m_tickCount;
    overwriteBuffer(m_block, m_tickCount % m_layout.facts.bufferCount, snapshot, m_tickCount);
}

void BlockWriter::setRunning(bool running) {
    store(headerOf(m_block).status, running ? irsdk_stConnected : 0);
}

}  // namespace publisher
