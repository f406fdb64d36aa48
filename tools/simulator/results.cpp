#include "tools/simulator/results.h"

#include <algorithm>
#include <limits>

namespace simulator {

void Results::report(int car, const TimedLap& lap, double total, int incidents, Tick due) {
    m_reports.push_back({car, lap, total, incidents, due});
}

bool Results::settle(Tick tick) {
    const auto firstDue =
        std::stable_partition(m_reports.begin(), m_reports.end(),
                              [&](const Report& report) { return report.due > tick; });
    if (firstDue == m_reports.end()) {
        return false;
    }
    std::for_each(firstDue, m_reports.end(), [&](const Report& report) { apply(report); });
    m_reports.erase(firstDue, m_reports.end());
    sort();
    return true;
}

bool Results::settleAll() {
    return settle(std::numeric_limits<Tick>::max());
}

int Results::position(int car) const {
    const auto line = std::find_if(m_lines.begin(), m_lines.end(),
                                   [&](const ResultLine& other) { return other.car == car; });
    return line == m_lines.end() ? 0 : static_cast<int>(line - m_lines.begin()) + 1;
}

void Results::apply(const Report& report) {
    auto line = std::find_if(m_lines.begin(), m_lines.end(),
                             [&](const ResultLine& other) { return other.car == report.car; });
    if (line == m_lines.end()) {
        line = m_lines.insert(m_lines.end(), ResultLine{.car = report.car});
    }
    line->lapsComplete = report.lap.number;
    line->last = report.lap.seconds.value_or(-1.0);
    line->total = report.total;
    line->incidents = report.incidents;
    if (report.lap.seconds && (line->fastest < 0.0 || *report.lap.seconds < line->fastest)) {
        line->fastest = *report.lap.seconds;
        line->fastestLap = report.lap.number;
    }
}

void Results::sort() {
    const auto fastestFirst = [](const ResultLine& a, const ResultLine& b) {
        if ((a.fastest < 0.0) != (b.fastest < 0.0)) {
            return a.fastest >= 0.0;
        }
        return a.fastest < b.fastest;
    };
    const auto farthestFirst = [](const ResultLine& a, const ResultLine& b) {
        return a.lapsComplete != b.lapsComplete ? a.lapsComplete > b.lapsComplete
                                                : a.total < b.total;
    };
    if (m_race) {
        std::stable_sort(m_lines.begin(), m_lines.end(), farthestFirst);
    } else {
        std::stable_sort(m_lines.begin(), m_lines.end(), fastestFirst);
    }
}

}  // namespace simulator
