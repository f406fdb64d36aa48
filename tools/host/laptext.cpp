#include "tools/host/laptext.h"

namespace rataip::host {

bool hasLapTime(const QTime& time) {
    const QTime noTime(0, 59, 59);
    return time.isValid() && time != noTime;
}

QString lapTimeText(const QTime& time) {
    if (!hasLapTime(time)) {
        return QStringLiteral("no time");
    }
    const QString format =
        time.hour() > 0 ? QStringLiteral("h:mm:ss.zzz") : QStringLiteral("m:ss.zzz");
    return time.toString(format);
}

QString lapTypeText(TLM::SDK::LapType type) {
    switch (type) {
        case TLM::SDK::LapType::OutLap:
            return QStringLiteral("out");
        case TLM::SDK::LapType::FlyingLap:
            return QStringLiteral("flying");
        case TLM::SDK::LapType::Unknown:
            break;
    }
    return QStringLiteral("unknown");
}

QString completionText(bool completed) {
    return completed ? QStringLiteral("completed") : QStringLiteral("not completed");
}

qsizetype channelCount(const TLM::SDK::Lap& lap) {
    return lap.getAvailableRecordedChannels().size() + lap.getAvailableCalculatedChannels().size();
}

}  // namespace rataip::host
