#pragma once

#include "tests/torture/host.h"
#include "tests/torture/lapledger.h"
#include "tests/torture/options.h"
#include "tests/torture/resourcelog.h"
#include "tests/torture/table.h"

#include <vector>

namespace torture {

/**
 * Hours of driving of a full field without a fault: the model of the stand-in simulator publishes
 * in this process, and the plugin takes every tick. Nothing except the laps may grow.
 */
class LongDrive {
public:
    LongDrive(const Options& options, Host& host) : m_options(options), m_host(host) {}

    void run();
    void addTo(Table& table) const;

private:
    /** Processor time of the plugin's ticks within an hour. */
    struct Hour {
        double median = 0.0;       // us
        double almostWorst = 0.0;  // us, exceeded by one of a thousand ticks
        double worst = 0.0;        // us
        double yardstick = 0.0;    // us, median of work that is always the same

        /** Independent of how busy the machine is in that hour. */
        [[nodiscard]] double relativeMedian() const { return median / yardstick; }
    };

    class Source;

    void driveHours(Source& source);
    [[nodiscard]] Resources restingResources();

    const Options& m_options;
    Host& m_host;
    std::vector<Hour> m_hours;
    LapBalance m_balance;
    Resources m_start;
    Resources m_end;
    long long m_missedTicks = 0;
    bool m_connected = true;
};

}  // namespace torture
