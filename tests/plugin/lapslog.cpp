#include "tests/plugin/lapslog.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

std::vector<DrivenLap> readLapsLog(const std::string& path) {
    std::vector<DrivenLap> laps;
    std::ifstream file(path);
    EXPECT_TRUE(file.is_open()) << path;
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with('#')) {
            continue;
        }
        std::istringstream columns(line);
        DrivenLap lap;
        std::string complete;
        columns >> lap.car >> lap.lap >> lap.kind >> lap.seconds >> lap.published >> lap.session >>
            lap.start >> lap.finish >> complete;
        EXPECT_FALSE(columns.fail()) << line;
        lap.complete = complete == "yes";
        laps.push_back(lap);
    }
    return laps;
}
