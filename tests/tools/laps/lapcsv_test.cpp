#include "tools/laps/lapcsv.h"

#include "tests/tools/laps/samplelap.h"

#include <QBuffer>
#include <QLocale>
#include <QTest>

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <limits>
#include <random>

namespace {

using rataip::laps::writeCsv;
using TLM::SDK::Lap;

QByteArray csvOf(const Lap& lap) {
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    EXPECT_TRUE(writeCsv(lap, buffer));
    return buffer.data();
}

TEST(LapCsv, BeginsWithALineOfNamesAndALineOfUnits) {
    Lap lap;
    lap.addChannel(channelWith({1.5, 2.0}, QStringLiteral("m/s")), QStringLiteral("speed"));
    lap.addChannel(channelWith({3.0, 4.0}), QStringLiteral("gear"));
    EXPECT_EQ(csvOf(lap), "gear,speed\r\n,m/s\r\n3,1.5\r\n4,2\r\n");
}

TEST(LapCsv, PutsCalculatedChannelsAfterRecordedOnesAndMarksThem) {
    Lap lap;
    lap.addChannel(channelWith({1.0}), QStringLiteral("speed"));
    lap.addCalculatedChannel(channelWith({2.0}), QStringLiteral("speed"));
    lap.addCalculatedChannel(channelWith({3.0}), QStringLiteral("a"));
    EXPECT_EQ(csvOf(lap), "speed,a (calculated),speed (calculated)\r\n,,\r\n1,3,2\r\n");
}

TEST(LapCsv, LeavesTheCellsOfMissingReadingsEmpty) {
    Lap lap;
    lap.addChannel(channelWith({1.0, kMissing, std::numeric_limits<double>::quiet_NaN(),
                                std::numeric_limits<double>::infinity(), 5.0}),
                   QStringLiteral("a"));
    lap.addChannel(channelWith({1.0, 2.0, 3.0, 4.0, kMissing}), QStringLiteral("b"));
    EXPECT_EQ(csvOf(lap), "a,b\r\n,\r\n1,1\r\n,2\r\n,3\r\n,4\r\n5,\r\n");
}

TEST(LapCsv, LeavesWhatAShorterChannelLacksEmpty) {
    Lap lap;
    lap.addChannel(channelWith({7.0}), QStringLiteral("a"));
    lap.addChannel(channelWith({2.0, 3.0}), QStringLiteral("b"));
    EXPECT_EQ(csvOf(lap), "a,b\r\n,\r\n7,2\r\n,3\r\n");
}

TEST(LapCsv, QuotesTextsThatHoldCommasQuotesOrLineEnds) {
    Lap lap;
    lap.addChannel(channelWith({1.0}, QStringLiteral("N,m")), QStringLiteral("a\"b"));
    lap.addChannel(channelWith({2.0}, QStringLiteral("x\ny")), QStringLiteral("c\rd"));
    EXPECT_EQ(csvOf(lap), "\"a\"\"b\",\"c\rd\"\r\n\"N,m\",\"x\ny\"\r\n1,2\r\n");
}

TEST(LapCsv, QuotesTheEmptyCellsOfAnOnlyColumn) {
    Lap lap;
    lap.addChannel(channelWith({kMissing, 1.0}), QStringLiteral("a"));
    EXPECT_EQ(csvOf(lap), "a\r\n\"\"\r\n\"\"\r\n1\r\n");
}

TEST(LapCsv, WritesTextsInUtf8) {
    Lap lap;
    lap.addChannel(channelWith({1.0}, QStringLiteral("°C")), QStringLiteral("Öl"));
    EXPECT_EQ(csvOf(lap), QByteArray("Öl\r\n°C\r\n1\r\n"));
}

TEST(LapCsv, IsEmptyForALapWithoutChannels) {
    EXPECT_TRUE(csvOf(Lap()).isEmpty());
}

TEST(LapCsv, WritesNumbersThatReadBackToTheSameBits) {
    QList<double> numbers = {0.0,
                             -0.0,
                             0.1,
                             -1.0 / 3.0,
                             1e23,
                             std::numeric_limits<double>::min(),
                             std::numeric_limits<double>::denorm_min(),
                             std::numeric_limits<double>::lowest(),
                             -std::numeric_limits<double>::infinity(),
                             static_cast<double>(0.1F)};
    std::mt19937_64 random(7);
    while (numbers.size() < 2000) {
        const auto number = std::bit_cast<double>(random());
        if (number < 1e24) {
            numbers.append(number);
        }
    }
    Lap lap;
    lap.addChannel(channelWith(numbers), QStringLiteral("a"));
    QList<QByteArray> lines = csvOf(lap).split('\n');
    ASSERT_EQ(lines.size(), numbers.size() + 3);
    for (qsizetype i = 0; i < numbers.size(); ++i) {
        bool isNumber = false;
        const double number = lines.at(i + 2).trimmed().toDouble(&isNumber);
        EXPECT_TRUE(isNumber) << lines.at(i + 2).toStdString();
        EXPECT_EQ(std::bit_cast<std::uint64_t>(number), std::bit_cast<std::uint64_t>(numbers.at(i)))
            << lines.at(i + 2).toStdString();
    }
}

TEST(LapCsv, WritesADecimalPointInEveryLocale) {
    const QLocale before;
    QLocale::setDefault(QLocale(QLocale::German));
    Lap lap;
    lap.addChannel(channelWith({1234567.25}), QStringLiteral("a"));
    EXPECT_EQ(csvOf(lap), "a\r\n\"\"\r\n1234567.25\r\n");
    QLocale::setDefault(before);
}

TEST(LapCsv, WritesALongLapInPieces) {
    const auto lap = ownLap(4, 20'000);
    EXPECT_EQ(csvOf(*lap).count("\r\n"), 20'002);
}

TEST(LapCsv, FailsWhenTheDeviceAcceptsNothing) {
    QBuffer closed;
    QTest::ignoreMessage(QtWarningMsg, "QIODevice::write (QBuffer): device not open");
    EXPECT_FALSE(writeCsv(*ownLap(4, 10), closed));
}

}  // namespace
