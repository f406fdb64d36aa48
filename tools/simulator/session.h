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

/** The state of a session with its published numbers. */
enum class SessionState {
    GetInCar = 1,    // cars are loading or on the grid
    Warmup = 2,      // engines are running on the grid
    ParadeLaps = 3,  // formation lap
    Racing = 4,      // also practice, qualifying and testing
    Checkered = 5,   // the flag is shown at the line
    CoolDown = 6,    // all cars are on the way to the pits
};

/** A planned session of a weekend. */
struct SessionPlan {
    SessionType type;
    std::optional<double> seconds;  // no value: without limit
    std::optional<int> laps;        // of a race
};

}  // namespace simulator
