#pragma once

#include "sdk/carinfo.h"

#include <optional>

namespace rataip::viewer {

/** What the window shows of one car, as of the newest tick. */
struct CarState {
    TLM::SDK::CarInfo info;
    std::optional<double> share;           // of the lap, 0 to 1; none while not in the world
    std::optional<int> lap;                // the lap it is on
    std::optional<double> lastLapSeconds;  // none without a time
    std::optional<int> position;           // by distance, 1 leads; none while not in the world

    [[nodiscard]] bool isOwn() const { return info.detailedTelemetry(); }
    [[nodiscard]] bool isInWorld() const { return share.has_value(); }
    [[nodiscard]] bool isInPits() const {
        return info.status() == TLM::SDK::CarStatus::InPitlane ||
               info.status() == TLM::SDK::CarStatus::InPitStall;
    }
};

}  // namespace rataip::viewer
