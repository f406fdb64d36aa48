#include "tests/support/drivenlaps.h"

#include <algorithm>
#include <fstream>
#include <sstream>

namespace testsupport {

std::optional<std::vector<DrivenLap>> readDrivenLaps(const std::string& path) {
    std::ifstream file(path);
    if (!file.is_open()) {
        return std::nullopt;
    }
    std::vector<DrivenLap> laps;
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with('#')) {
            continue;
        }
        std::istringstream columns(line);
        DrivenLap lap;
        std::string complete;
        columns >> lap.car >> lap.lap >> lap.kind >> lap.seconds >> lap.published >> lap.session >>
            lap.start >> lap.finish >> complete;
        if (columns.fail()) {
            return std::nullopt;
        }
        lap.complete = complete == "yes";
        laps.push_back(lap);
    }
    return laps;
}

bool isHandedOver(const DrivenLap& lap) {
    return lap.complete || lap.kind == "in";
}

bool vanishedBeforeItsResult(const DrivenLap& lap, const std::vector<DrivenLap>& all) {
    return std::any_of(all.begin(), all.end(), [&lap](const DrivenLap& next) {
        return next.car == lap.car && next.start == lap.finish && !next.complete &&
               next.finish - next.start < kResultTicks;
    });
}

}  // namespace testsupport
