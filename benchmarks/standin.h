#pragma once

#include "benchmarks/workload.h"
#include "tests/support/publishedobjects.h"

#include <cstddef>
#include <string>

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

    /** Gives the newest buffer the next tick count: the same snapshot is new once more. */
    void republish();

    /** The text changes where the results do. */
    void publishResults(const Results& results);

    [[nodiscard]] const char* newestBuffer() const;
    [[nodiscard]] int bufferLength() const { return m_workload.bufferLength(); }

private:
    void layOut(const std::string& text);
    [[nodiscard]] irsdk_header& header() const;
    [[nodiscard]] irsdk_varBuf& descriptor(int buffer) const;
    void complete(int buffer);
    void writeText(const std::string& text);

    const Workload& m_workload;
    testsupport::PublishedObjects m_objects;
    Results m_results{};
    std::size_t m_textCapacity = 0;
    int m_newest = 0;
    std::int32_t m_tickCount = 0;
};

}  // namespace bench
