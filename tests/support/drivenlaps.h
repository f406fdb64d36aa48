#pragma once

#include <optional>
#include <string>
#include <vector>

namespace testsupport {

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

/** Reads a whole log; nothing when there is none or when a line is none of a log. */
[[nodiscard]] std::optional<std::vector<DrivenLap>> readDrivenLaps(const std::string& path);

/**
 * Whether a lap of this kind is handed over. One that ends on pit road is, as not completed; one
 * that ends because the car vanishes (its driver, the session or the simulator has left) is never
 * closed.
 */
[[nodiscard]] bool isHandedOver(const DrivenLap& lap);

/**
 * Results follow the line by up to 2 s. Until then the lap is still open, and for ever when the car
 * vanishes meanwhile.
 */
[[nodiscard]] bool vanishedBeforeItsResult(const DrivenLap& lap, const std::vector<DrivenLap>& all);

/** Ticks from the line to the last of what the simulator says of a lap, with some to spare. */
inline constexpr int kResultTicks = 130;

}  // namespace testsupport
