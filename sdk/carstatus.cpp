#include "sdk/carstatus.h"

namespace TLM::SDK {

QString carStatusToString(CarStatus status) {
    switch (status) {
        case CarStatus::Undefined:
            return QStringLiteral("Undefined");
        case CarStatus::NotConnected:
            return QStringLiteral("Not connected");
        case CarStatus::NotInWorld:
            return QStringLiteral("Not in world");
        case CarStatus::WaitingForStart:
            return QStringLiteral("Waiting for start");
        case CarStatus::InPitStall:
            return QStringLiteral("In pit stall");
        case CarStatus::InPitlane:
            return QStringLiteral("In pitlane");
        case CarStatus::OutLap:
            return QStringLiteral("Out lap");
        case CarStatus::FlyingLap:
            return QStringLiteral("Flying lap");
        case CarStatus::OnTrack:
            return QStringLiteral("On track");
        case CarStatus::OffTrack:
            return QStringLiteral("Off track");
    }
    return {};
}

}  // namespace TLM::SDK
