#pragma once

#include "tools/simulator/clock.h"
#include "tools/simulator/laptimer.h"

#include <vector>

namespace simulator {

/** One car's line in the results of a session. */
struct ResultLine {
    int car = 0;
    int lapsComplete = 0;
    double last = -1.0;     // s, -1 when there is none
    double fastest = -1.0;  // s, -1 when there is none
    int fastestLap = -1;
    double total = 0.0;  // session time at the last line crossing, s
    int incidents = 0;
};

/**
 * The official results of one session. A finished lap is reported at the line and shows in the
 * results only when it is due; until then the old line stands, as with the real timing.
 */
class Results {
public:
    explicit Results(bool race) : m_race(race) {}

    /** Car `car` has passed the line at session time `total`; published from tick `due` on. */
    void report(int car, const TimedLap& lap, double total, int incidents, Tick due);

    /** Publishes what is due at `tick`; true when that changed the results. */
    bool settle(Tick tick);

    /** Publishes everything that was reported; true when that changed the results. */
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
