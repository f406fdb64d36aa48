#include "benchmarks/standin.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace bench {

StandIn::StandIn(const Workload& workload)
    : m_workload(workload),
      m_layout({.tickRate = static_cast<int>(kTicksPerSecond),
                .bufferLength = static_cast<std::size_t>(workload.bufferLength())},
               workload.table().size()),
      m_snapshot(static_cast<std::size_t>(workload.bufferLength())) {
    if (const std::string complaint = m_objects.claim(m_layout.size); !complaint.empty()) {
        std::fprintf(stderr, "rataip-bench: %s\n", complaint.c_str());
        std::exit(2);
    }
    m_writer.emplace(m_objects.block(), m_layout, workload.table());
    m_writer->showText(workload.sessionText(m_results));
    m_writer->setRunning(true);
}

const irsdk_header& StandIn::header() const {
    return publisher::headerOf(m_objects.block());
}

void StandIn::publish(int tick) {
    m_workload.fill(m_snapshot.data(), tick);
    m_writer->publish(std::as_bytes(std::span(m_snapshot)));
    m_objects.signalEvent();
}

void StandIn::republish() {
    std::int32_t newest = 0;
    for (int i = 0; i < header().numBuf; ++i) {
        newest = std::max(newest, publisher::descriptorOf(m_objects.block(), i).tickCount);
    }
    publisher::store(publisher::descriptorOf(m_objects.block(), 0).tickCount, newest + 1);
}

void StandIn::publishResults(const Results& results) {
    if (results != m_results) {
        m_results = results;
        m_writer->showText(m_workload.sessionText(results));
    }
}

}  // namespace bench
