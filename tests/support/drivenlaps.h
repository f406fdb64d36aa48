#pragma once

#include <optional>
#include <string>
#include <vector>

namespace testsupport {

/** A line of the stand-in simulator's log: a lap, or a part of one, as the model drove it. */
struct DrivenLap {
    int car = 0;
    int lap = 0;
    std::string kind;        // out, flying, or in for a lap cut short by the pits
    double seconds = 0.0;    // official time, negative if missing
    float published = 0.0F;  // the same time as it was published
    int session = 0;
    long long start = 0;  // ticks
    long long finish = 0;
    bool complete = false;
};

/** Reads a log; empty if it is missing or a line is malformed. */
[[nodiscard]] std::optional<std::vector<DrivenLap>> readDrivenLaps(const std::string& path);

/**
 * Whether a lap of this kind is handed over. One that ends on pit road is, as not completed. One
 * that ends because the car vanishes (driver gone, session or simulator ended) is never closed.
 */
[[nodiscard]] bool isHandedOver(const DrivenLap& lap);

/**
 * Results come up to 2 s after the line is crossed. Until then the lap is open, and it is never
 * closed if the car vanishes in that time.
 */
[[nodiscard]] bool vanishedBeforeItsResult(const DrivenLap& lap, const std::vector<DrivenLap>& all);

/** Ticks from the line until the simulator has published all about a lap, with a margin. */
inline constexpr int kResultTicks = 130;

}  // namespace testsupport
