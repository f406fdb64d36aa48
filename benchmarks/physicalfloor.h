#pragma once

#include "benchmarks/blockfile.h"
#include "benchmarks/plainnodes.h"
#include "benchmarks/workload.h"

#include <array>
#include <vector>

namespace bench {

/**
 * What no tick can do without: one read of the snapshot and of the table of variables, plain stores
 * of the readings, and push_back of as many numbers as are recorded.
 */
class PhysicalFloor {
public:
    /** The simulator publishes already, and the fastest car needs so many ticks for a lap. */
    PhysicalFloor(const Workload& workload, int ticksPerLap);

    void tick(const irsdk_header& header);

private:
    BlockFile m_block;
    std::vector<char> m_snapshot;
    std::vector<irsdk_varHeader> m_table;
    std::array<PlainNodes, 2> m_nodes;  // the host keeps the last list
    std::size_t m_turn = 0;
    std::vector<std::vector<double>> m_columns;
    std::size_t m_longestLap;
};

}  // namespace bench
