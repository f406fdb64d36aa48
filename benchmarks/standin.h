#pragma once

#include "benchmarks/workload.h"
#include "tools/publisher/block.h"
#include "tools/publisher/namedobjects.h"

#include <optional>
#include <vector>

namespace bench {

/**
 * A simulator within the measuring process: it publishes the workload's block under the names that
 * the link knows, one snapshot at a time and never while somebody reads.
 */
class StandIn {
public:
    /** Ends the program with a message when a simulator is publishing already. */
    explicit StandIn(const Workload& workload);

    /** Completes the next buffer with the snapshot of a tick of the race. */
    void publish(int tick);

    /** Gives the first buffer the next tick count: the same snapshot is new once more. */
    void republish();

    /** The text changes where the results do. */
    void publishResults(const Results& results);

    [[nodiscard]] const irsdk_header& header() const;
    [[nodiscard]] int bufferLength() const { return m_workload.bufferLength(); }

private:
    const Workload& m_workload;
    publisher::NamedObjects m_objects;
    publisher::BlockLayout m_layout;
    std::optional<publisher::BlockWriter> m_writer;
    std::vector<char> m_snapshot;
    Results m_results{};
};

}  // namespace bench
