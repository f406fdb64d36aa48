#pragma once

#include "sdk/carinfo.h"

#include <optional>

namespace rataip::viewer {

/** What the window shows of one car, from the newest tick. */
struct CarState {
    TLM::SDK::CarInfo info;
    std::optional<double> share;           // of the lap, 0 to 1; no value while out of the world
    std::optional<int> lap;                // number of the current lap
    std::optional<double> lastLapSeconds;  // no value without a time
    std::optional<int> position;           // by distance, from 1; no value while out of the world

    [[nodiscard]] bool isOwn() const { return info.detailedTelemetry(); }
    [[nodiscard]] bool isInWorld() const { return share.has_value(); }
    [[nodiscard]] bool isInPits() const {
        return info.status() == TLM::SDK::CarStatus::InPitlane ||
               info.status() == TLM::SDK::CarStatus::InPitStall;
    }
};

}  // namespace rataip::viewer
