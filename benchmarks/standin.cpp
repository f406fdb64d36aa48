#include "benchmarks/standin.h"

#include "irsdk/irsdk.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace bench {

namespace {

constexpr int bufferCount = 3;
constexpr std::size_t spareTextBytes = 16384;

[[noreturn]] void giveUp(const char* reason) {
    std::fprintf(stderr, "rataip-bench: %s\n", reason);
    std::exit(2);
}

void store(std::int32_t& field, std::int32_t value) {
    std::atomic_ref<std::int32_t>(field).store(value, std::memory_order_release);
}

}  // namespace

StandIn::StandIn(const Workload& workload) : m_workload(workload) {
    if (irsdk_startup()) {
        irsdk_shutdown();
        giveUp("a simulator is running; end it first");
    }
    irsdk_shutdown();
    layOut(workload.sessionText(m_results));
}

void StandIn::layOut(const std::string& text) {
    const std::vector<irsdk_varHeader>& table = m_workload.table();
    const std::size_t tableBytes = table.size() * sizeof(irsdk_varHeader);
    const std::size_t tableOffset =
        offsetof(irsdk_header, varBuf) + bufferCount * sizeof(irsdk_varBuf);
    const std::size_t textOffset = tableOffset + tableBytes;
    m_textCapacity = (text.size() + spareTextBytes) / 16 * 16;
    const std::size_t ringOffset = textOffset + m_textCapacity;
    const std::size_t stride = (static_cast<std::size_t>(bufferLength()) + 63) / 64 * 64;
    if (!m_objects.createBlock(ringOffset + bufferCount * stride) || !m_objects.createEvent()) {
        giveUp("cannot publish the simulator's objects");
    }
    irsdk_header start = m_workload.header();
    start.version = 2;
    start.status = irsdk_stConnected;
    start.tickRate = static_cast<std::int32_t>(ticksPerSecond);
    start.sessionInfoUpdate = 1;
    start.sessionInfoLength = static_cast<std::int32_t>(m_textCapacity);
    start.sessionInfoOffset = static_cast<std::int32_t>(textOffset);
    start.varHeaderOffset = static_cast<std::int32_t>(tableOffset);
    start.numBuf = bufferCount;
    std::memcpy(m_objects.block(), &start, sizeof start);
    for (int i = 0; i < bufferCount; ++i) {
        descriptor(i) = {};
        descriptor(i).bufferOffset =
            static_cast<std::int32_t>(ringOffset + static_cast<std::size_t>(i) * stride);
    }
    std::memcpy(m_objects.block() + tableOffset, table.data(), tableBytes);
    writeText(text);
}

irsdk_header& StandIn::header() const {
    return *reinterpret_cast<irsdk_header*>(m_objects.block());
}

irsdk_varBuf& StandIn::descriptor(int buffer) const {
    return *reinterpret_cast<irsdk_varBuf*>(m_objects.block() + offsetof(irsdk_header, varBuf) +
                                            static_cast<std::size_t>(buffer) *
                                                sizeof(irsdk_varBuf));
}

const char* StandIn::newestBuffer() const {
    return m_objects.block() + descriptor(m_newest).bufferOffset;
}

void StandIn::publish(int tick) {
    const int buffer = (m_newest + 1) % bufferCount;
    store(descriptor(buffer).tickCount, -1);
    m_workload.fill(m_objects.block() + descriptor(buffer).bufferOffset, tick);
    complete(buffer);
    m_objects.signalEvent();
}

void StandIn::republish() {
    complete(m_newest);
}

void StandIn::complete(int buffer) {
    store(descriptor(buffer).tickCount, ++m_tickCount);
    m_newest = buffer;
}

void StandIn::publishResults(const Results& results) {
    if (results == m_results) {
        return;
    }
    m_results = results;
    writeText(m_workload.sessionText(results));
    store(header().sessionInfoUpdate, header().sessionInfoUpdate + 1);
}

void StandIn::writeText(const std::string& text) {
    char* const bytes = m_objects.block() + header().sessionInfoOffset;
    const std::size_t length = std::min(text.size(), m_textCapacity - 1);
    std::memcpy(bytes, text.data(), length);
    bytes[length] = '\0';
}

}  // namespace bench
