#include "tools/laps/lapjson.h"

#include "tests/tools/laps/samplelap.h"

#include <QBuffer>
#include <QJsonArray>
#include <QJsonDocument>

#include <gtest/gtest.h>

#include <limits>

namespace {

using rataip::laps::lapJson;
using TLM::SDK::Lap;

QJsonObject headerOf(const Lap& lap) {
    return lapJson(lap).value(QStringLiteral("header")).toObject();
}

QJsonObject valueOf(const Lap& lap, const QString& name) {
    return lapJson(lap).value(QStringLiteral("values")).toObject().value(name).toObject();
}

TEST(LapJson, HoldsEveryFieldOfTheHeader) {
    Lap lap;
    lap.setCarId(QStringLiteral("3"));
    lap.setDriverName(QStringLiteral("Ada \"Ace\" Berg"));
    lap.setTeamName(QStringLiteral("Nordlicht"));
    lap.setCarName(QStringLiteral("V8"));
    lap.setClassName(QStringLiteral("GT"));
    lap.setTrackName(QStringLiteral("Grand"));
    lap.setTrackConfig(QStringLiteral("Full"));
    lap.setSource(QStringLiteral("source"));
    lap.setPlugin(QStringLiteral("plugin"));
    lap.setFileName(QStringLiteral("file"));
    lap.setStatus(TLM::SDK::CarStatus::FlyingLap);
    lap.setDetailedTelemetry(false);
    lap.setDateTime(QDateTime(QDate(2024, 5, 6), QTime(7, 8, 9, 10), Qt::UTC));
    lap.setLapTime(QTime(0, 1, 34, 512));
    const QUuid id(QStringLiteral("00112233-4455-6677-8899-aabbccddeeff"));
    lap.setLapId(id);
    lap.setStintId(id);
    lap.setSessionId(id);
    lap.setLapInSession(4);
    lap.setLapInStint(3);
    lap.setStintInSession(2);
    lap.setSession(TLM::SDK::Session::Race);
    lap.setLapType(TLM::SDK::LapType::OutLap);
    lap.setCompleted(true);

    const QString idText = QStringLiteral("00112233-4455-6677-8899-aabbccddeeff");
    const QJsonObject expected = {
        {QStringLiteral("carId"), QStringLiteral("3")},
        {QStringLiteral("driverName"), QStringLiteral("Ada \"Ace\" Berg")},
        {QStringLiteral("teamName"), QStringLiteral("Nordlicht")},
        {QStringLiteral("carName"), QStringLiteral("V8")},
        {QStringLiteral("className"), QStringLiteral("GT")},
        {QStringLiteral("trackName"), QStringLiteral("Grand")},
        {QStringLiteral("trackConfig"), QStringLiteral("Full")},
        {QStringLiteral("source"), QStringLiteral("source")},
        {QStringLiteral("pluginName"), QStringLiteral("plugin")},
        {QStringLiteral("fileName"), QStringLiteral("file")},
        {QStringLiteral("status"), QStringLiteral("Flying lap")},
        {QStringLiteral("detailedTelemetry"), false},
        {QStringLiteral("dateTime"), QStringLiteral("2024-05-06T07:08:09.010Z")},
        {QStringLiteral("lapTime"), 94512},
        {QStringLiteral("lapId"), idText},
        {QStringLiteral("stintId"), idText},
        {QStringLiteral("sessionId"), idText},
        {QStringLiteral("lapInSession"), 4},
        {QStringLiteral("lapInStint"), 3},
        {QStringLiteral("stintInSession"), 2},
        {QStringLiteral("session"), QStringLiteral("Race")},
        {QStringLiteral("lapType"), QStringLiteral("out")},
        {QStringLiteral("completed"), true}};
    EXPECT_EQ(headerOf(lap), expected);
}

TEST(LapJson, NamesEveryKindOfSession) {
    using TLM::SDK::Session;
    const QList<std::pair<Session, QString>> kinds = {
        {Session::Unknown, QStringLiteral("unknown")},
        {Session::OfflineTesting, QStringLiteral("Offline testing")},
        {Session::Practice, QStringLiteral("Practice")},
        {Session::Qualify, QStringLiteral("Qualify")},
        {Session::Warmup, QStringLiteral("Warmup")},
        {Session::Race, QStringLiteral("Race")}};
    Lap lap;
    for (const auto& [session, text] : kinds) {
        lap.setSession(session);
        EXPECT_EQ(headerOf(lap).value(QStringLiteral("session")).toString(), text);
    }
}

TEST(LapJson, HasNullForAMissingLapTime) {
    Lap lap;
    EXPECT_TRUE(headerOf(lap).value(QStringLiteral("lapTime")).isNull());
    lap.setLapTime(QTime(0, 59, 59));
    EXPECT_TRUE(headerOf(lap).value(QStringLiteral("lapTime")).isNull());
}

TEST(LapJson, KeepsTheKindOfEachValueWithItsUnit) {
    Lap lap;
    lap.setValue(QStringLiteral("length"), 4.25, QStringLiteral("km"));
    lap.setValue(QStringLiteral("count"), 7, {});
    lap.setValue(QStringLiteral("name"), QStringLiteral("wet"), {});
    lap.setValue(QStringLiteral("flag"), true, {});
    lap.setValue(QStringLiteral("time"), QTime(1, 2, 3), {});
    lap.setValue(QStringLiteral("nothing"), QVariant(), {});
    lap.setValue(QStringLiteral("nan"), std::numeric_limits<double>::quiet_NaN(), {});
    const QString value = QStringLiteral("value");
    EXPECT_EQ(valueOf(lap, QStringLiteral("length")),
              (QJsonObject{{value, 4.25}, {QStringLiteral("unit"), QStringLiteral("km")}}));
    EXPECT_EQ(valueOf(lap, QStringLiteral("count")).value(value), QJsonValue(7));
    EXPECT_EQ(valueOf(lap, QStringLiteral("name")).value(value), QJsonValue(QStringLiteral("wet")));
    EXPECT_EQ(valueOf(lap, QStringLiteral("flag")).value(value), QJsonValue(true));
    EXPECT_TRUE(valueOf(lap, QStringLiteral("time"))
                    .value(value)
                    .toString()
                    .startsWith(QStringLiteral("01:02:03")));
    EXPECT_TRUE(valueOf(lap, QStringLiteral("nothing")).value(value).isNull());
    EXPECT_TRUE(valueOf(lap, QStringLiteral("nan")).value(value).isNull());
}

TEST(LapJson, ListsRecordedAndCalculatedChannels) {
    Lap lap;
    lap.addChannel(channelWith({1.0, 2.0}, QStringLiteral("m/s")), QStringLiteral("speed"));
    lap.addCalculatedChannel(channelWith({1.0}), QStringLiteral("delta"));
    const QJsonArray expected = {QJsonObject{{QStringLiteral("name"), QStringLiteral("speed")},
                                             {QStringLiteral("unit"), QStringLiteral("m/s")},
                                             {QStringLiteral("samples"), 2},
                                             {QStringLiteral("calculated"), false}},
                                 QJsonObject{{QStringLiteral("name"), QStringLiteral("delta")},
                                             {QStringLiteral("unit"), QString()},
                                             {QStringLiteral("samples"), 1},
                                             {QStringLiteral("calculated"), true}}};
    EXPECT_EQ(lapJson(lap).value(QStringLiteral("channels")).toArray(), expected);
}

TEST(LapJson, IsWrittenAsADocumentThatReadsBackTheSame) {
    const auto lap = ownLap();
    lap->setValue(QStringLiteral("third"), 1.0 / 3.0, {});
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    const rataip::laps::LapFormat format = rataip::laps::jsonFormat();
    EXPECT_EQ(format.suffix, QStringLiteral("json"));
    ASSERT_TRUE(format.write(*lap, buffer));
    EXPECT_EQ(QJsonDocument::fromJson(buffer.data()).object(), lapJson(*lap));
}

}  // namespace
