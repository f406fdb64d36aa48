#include "benchmarks/physicalfloor.h"

namespace bench {

PhysicalFloor::PhysicalFloor(const Workload& workload, int ticksPerLap)
    : m_snapshot(static_cast<std::size_t>(workload.bufferLength())),
      m_table(workload.table()),
      m_nodes{PlainNodes(workload.table()), PlainNodes(workload.table())},
      m_longestLap(static_cast<std::size_t>(ticksPerLap)) {
    m_columns.resize(m_nodes.front().count());
    for (std::vector<double>& column : m_columns) {
        column.reserve(m_longestLap);
    }
}

void PhysicalFloor::tick(const irsdk_header& header) {
    m_block.read(m_snapshot.data(), m_snapshot.size(), header.varBuf[0].bufferOffset);
    m_block.read(m_table.data(), m_table.size() * sizeof(irsdk_varHeader), header.varHeaderOffset);
    m_nodes[m_turn].store(m_snapshot.data());
    m_turn = (m_turn + 1) % m_nodes.size();
    if (m_columns.front().size() == m_longestLap) {
        for (std::vector<double>& column : m_columns) {
            column.clear();
        }
    }
    double number = 0.0;
    for (std::vector<double>& column : m_columns) {
        column.push_back(number);
        number += 1.0;
    }
}

}  // namespace bench
