#include "tools/laps/lapjson.h"

#include "tools/host/laptext.h"
#include "tools/laps/newfile.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonValue>
#include <QTime>
#include <QVariant>

namespace rataip::laps {

using TLM::SDK::Channel;
using TLM::SDK::DynamicData;
using TLM::SDK::Lap;
using TLM::SDK::LapHeader;

namespace {

QJsonValue timeJson(const QTime& time) {
    return host::hasLapTime(time) ? QJsonValue(time.msecsSinceStartOfDay()) : QJsonValue();
}

QString sessionText(TLM::SDK::Session session) {
    switch (session) {
        case TLM::SDK::Session::OfflineTesting:
            return QStringLiteral("Offline testing");
        case TLM::SDK::Session::Practice:
            return QStringLiteral("Practice");
        case TLM::SDK::Session::Qualify:
            return QStringLiteral("Qualify");
        case TLM::SDK::Session::Warmup:
            return QStringLiteral("Warmup");
        case TLM::SDK::Session::Race:
            return QStringLiteral("Race");
        case TLM::SDK::Session::Unknown:
            break;
    }
    return QStringLiteral("unknown");
}

QJsonObject valuesJson(const DynamicData& values) {
    QJsonObject json;
    for (auto value = values.data().cbegin(); value != values.data().cend(); ++value) {
        json.insert(value.key(),
                    QJsonObject{{QStringLiteral("value"), QJsonValue::fromVariant(value->value)},
                                {QStringLiteral("unit"), value->unit()}});
    }
    return json;
}

QJsonObject channelJson(const QString& name, const Channel& channel, bool isCalculated) {
    return {{QStringLiteral("name"), name},
            {QStringLiteral("unit"), channel.unit()},
            {QStringLiteral("samples"), channel.samples.size()},
            {QStringLiteral("calculated"), isCalculated}};
}

QJsonArray channelsJson(const Lap& lap) {
    QJsonArray json;
    const Lap::ChannelMap& recorded = lap.channels();
    for (auto channel = recorded.cbegin(); channel != recorded.cend(); ++channel) {
        json.append(channelJson(channel.key(), **channel, false));
    }
    const QStringList calculated = lap.getAvailableCalculatedChannels();
    for (const QString& name : calculated) {
        json.append(channelJson(name, *lap.calculatedChannel(name), true));
    }
    return json;
}

bool writeJson(const Lap& lap, QIODevice& device) {
    return writeAll(device, QJsonDocument(lapJson(lap)).toJson());
}

}  // namespace

QJsonObject lapHeaderJson(const LapHeader& lap) {
    return {
        {QStringLiteral("carId"), lap.carId()},
        {QStringLiteral("driverName"), lap.driverName()},
        {QStringLiteral("teamName"), lap.teamName()},
        {QStringLiteral("carName"), lap.carName()},
        {QStringLiteral("className"), lap.className()},
        {QStringLiteral("trackName"), lap.trackName()},
        {QStringLiteral("trackConfig"), lap.trackConfig()},
        {QStringLiteral("source"), lap.source()},
        {QStringLiteral("pluginName"), lap.pluginName()},
        {QStringLiteral("fileName"), lap.fileName()},
        {QStringLiteral("status"), TLM::SDK::carStatusToString(lap.status())},
        {QStringLiteral("detailedTelemetry"), lap.detailedTelemetry()},
        {QStringLiteral("dateTime"), lap.dateTime().toString(Qt::ISODateWithMs)},
        {QStringLiteral("lapTime"), timeJson(lap.lapTime())},
        {QStringLiteral("lapId"), lap.lapId().toString(QUuid::WithoutBraces)},
        {QStringLiteral("stintId"), lap.stintId().toString(QUuid::WithoutBraces)},
        {QStringLiteral("sessionId"), lap.sessionId().toString(QUuid::WithoutBraces)},
        {QStringLiteral("lapInSession"), lap.lapInSession()},
        {QStringLiteral("lapInStint"), lap.lapInStint()},
        {QStringLiteral("stintInSession"), lap.stintInSession()},
        {QStringLiteral("session"), sessionText(lap.session())},
        {QStringLiteral("lapType"), host::lapTypeText(lap.lapType())},
        {QStringLiteral("completed"), lap.completed()},
    };
}

QJsonObject lapJson(const Lap& lap) {
    return {{QStringLiteral("header"), lapHeaderJson(lap)},
            {QStringLiteral("values"), valuesJson(lap.values())},
            {QStringLiteral("channels"), channelsJson(lap)}};
}

LapFormat jsonFormat() {
    return {QStringLiteral("json"), &writeJson};
}

}  // namespace rataip::laps
