#include "sdk/carstatus.h"

#include "sdk/utilities.h"
#include "tests/support/printqt.h"

#include <gtest/gtest.h>

#include <type_traits>

using TLM::SDK::CarStatus;
using TLM::SDK::carStatusToString;

static_assert(std::is_same_v<std::underlying_type_t<CarStatus>, std::int32_t>);

TEST(CarStatus, HasAFixedNumberAndTextForEveryState) {
    const struct {
        CarStatus status;
        int number;
        const char* text;
    } rows[] = {
        {CarStatus::Undefined, -1, "Undefined"},
        {CarStatus::NotConnected, 0, "Not connected"},
        {CarStatus::NotInWorld, 1, "Not in world"},
        {CarStatus::WaitingForStart, 2, "Waiting for start"},
        {CarStatus::InPitStall, 3, "In pit stall"},
        {CarStatus::InPitlane, 4, "In pitlane"},
        {CarStatus::OutLap, 5, "Out lap"},
        {CarStatus::FlyingLap, 6, "Flying lap"},
        {CarStatus::OnTrack, 7, "On track"},
        {CarStatus::OffTrack, 8, "Off track"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(static_cast<int>(row.status), row.number);
        EXPECT_EQ(carStatusToString(row.status), row.text);
    }
}

TEST(CarStatus, HasANullTextForOtherNumbers) {
    EXPECT_TRUE(carStatusToString(static_cast<CarStatus>(9)).isNull());
    EXPECT_TRUE(carStatusToString(static_cast<CarStatus>(-2)).isNull());
}
