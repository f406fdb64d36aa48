#pragma once

#include <optional>

namespace simulator {

enum class SessionType { Testing, Practice, Qualify, Warmup, Race };

/** The text that the session information uses for `type`. */
constexpr const char* sessionTypeText(SessionType type) {
    switch (type) {
        case SessionType::Testing:
            return "Offline testing";
        case SessionType::Practice:
            return "Practice";
        case SessionType::Qualify:
            return "Qualify";
        case SessionType::Warmup:
            return "Warmup";
        case SessionType::Race:
            return "Race";
    }
    return "";
}

/** State of a session, with the numbers that are published. */
enum class SessionState {
    GetInCar = 1,    // cars are being loaded or stand on the grid
    Warmup = 2,      // engines run on the grid
    ParadeLaps = 3,  // formation lap
    Racing = 4,      // under way; also practice, qualifying and testing
    Checkered = 5,   // the end is shown at the line
    CoolDown = 6,    // everyone is on the way to the pits
};

/** One session of a weekend as it is planned. */
struct SessionPlan {
    SessionType type;
    std::optional<double> seconds;  // no value: without limit
    std::optional<int> laps;        // of a race
};

}  // namespace simulator
