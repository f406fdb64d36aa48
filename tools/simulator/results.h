#pragma once

#include "tools/simulator/clock.h"
#include "tools/simulator/laptimer.h"

#include <vector>

namespace simulator {

/** A car's line in the results of a session. */
struct ResultLine {
    int car = 0;
    int lapsComplete = 0;
    double last = -1.0;     // s, -1 without one
    double fastest = -1.0;  // s, -1 without one
    int fastestLap = -1;
    double total = 0.0;  // session time at the last line crossing, s
    int incidents = 0;
};

/**
 * The official results of a session. A finished lap is reported at the line but appears in the
 * results only when it is due, as in the real timing.
 */
class Results {
public:
    explicit Results(bool race) : m_race(race) {}

    /** Car `car` passed the line at session time `total`. Published from tick `due` on. */
    void report(int car, const TimedLap& lap, double total, int incidents, Tick due);

    /** Publishes what is due at `tick`. Returns whether the results changed. */
    bool settle(Tick tick);

    /** Publishes all reports. Returns whether the results changed. */
    bool settleAll();

    /** Best first. A car is listed from its first published lap on. */
    const std::vector<ResultLine>& lines() const { return m_lines; }

    /** 1 for the first, 0 for a car that is not listed. */
    int position(int car) const;

private:
    struct Report {
        int car;
        TimedLap lap;
        double total;
        int incidents;
        Tick due;
    };

    void apply(const Report& report);
    void sort();

    bool m_race;
    std::vector<Report> m_reports;
    std::vector<ResultLine> m_lines;
};

}  // namespace simulator
