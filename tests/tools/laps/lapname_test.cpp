#include "tools/laps/lapname.h"

#include "tests/tools/laps/samplelap.h"

#include <gtest/gtest.h>

namespace {

using rataip::laps::lapFileName;
using TLM::SDK::Lap;

TEST(LapFileName, IdentifiesTheLap) {
    EXPECT_EQ(lapFileName(*ownLap()),
              QStringLiteral("car03_Ada-Berg_practice_lap4_flying_1m34s512"));
}

TEST(LapFileName, LeavesOutWhatIsNotKnown) {
    EXPECT_EQ(lapFileName(Lap()), QStringLiteral("car00_lap0_unknown_notime"));
}

TEST(LapFileName, SaysTheHourOfALongLap) {
    Lap lap;
    lap.setLapTime(QTime(1, 2, 3, 4));
    EXPECT_TRUE(lapFileName(lap).endsWith(QStringLiteral("_1h02m03s004")));
}

TEST(LapFileName, NamesEveryKindOfSession) {
    using TLM::SDK::Session;
    const QList<std::pair<Session, QString>> kinds = {
        {Session::OfflineTesting, QStringLiteral("testing")},
        {Session::Practice, QStringLiteral("practice")},
        {Session::Qualify, QStringLiteral("qualify")},
        {Session::Warmup, QStringLiteral("warmup")},
        {Session::Race, QStringLiteral("race")}};
    Lap lap;
    for (const auto& [session, text] : kinds) {
        lap.setSession(session);
        EXPECT_TRUE(lapFileName(lap).contains(QStringLiteral("_%1_").arg(text)));
    }
}

TEST(LapFileName, NeverHoldsADotASlashOrABlank) {
    Lap lap;
    for (const char* name : {"../../etc/passwd", "J. R. Smith Jr.", "a\\b:c*d?e\"f<g>h|i", "\n\t.",
                             "..", "$(rm -rf)", "😀😀"}) {
        lap.setDriverName(QString::fromUtf8(name));
        lap.setCarId(QString::fromUtf8(name));
        const QString file = lapFileName(lap);
        for (const QChar letter : file) {
            EXPECT_TRUE(letter.isLetterOrNumber() || letter == QLatin1Char('-') ||
                        letter == QLatin1Char('_'))
                << file.toStdString();
        }
    }
}

TEST(LapFileName, KeepsLettersOfEveryLanguage) {
    Lap lap;
    lap.setDriverName(QStringLiteral("  François  Günther 山田 "));
    EXPECT_TRUE(lapFileName(lap).contains(QStringLiteral("_François-Günther-山田_")));
}

TEST(LapFileName, StaysShortEnoughForEveryFileSystem) {
    Lap lap;
    lap.setDriverName(QString(10'000, QChar(0x5c71)));
    lap.setCarId(QString(10'000, QLatin1Char('9')));
    EXPECT_LE(lapFileName(lap).toUtf8().size(), 220);
}

}  // namespace
