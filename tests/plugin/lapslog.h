#pragma once

#include <string>
#include <vector>

/** A line of the stand-in simulator's log: a stretch as the model drove it. */
struct DrivenLap {
    int car = 0;
    int lap = 0;
    std::string kind;        // out, flying, or in for a lap cut short by the pits
    double seconds = 0.0;    // official time, below 0 when there is none
    float published = 0.0F;  // the same as the number that was published
    int session = 0;
    long long start = 0;  // ticks
    long long finish = 0;
    bool complete = false;
};

/** Reads a whole log; lines that are none are a failure of the running test. */
[[nodiscard]] std::vector<DrivenLap> readLapsLog(const std::string& path);
