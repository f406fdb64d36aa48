#include "tools/viewer/laplistmodel.h"

#include "tests/tools/laps/samplelap.h"

#include <QAbstractItemModelTester>
#include <QFont>

#include <gtest/gtest.h>

namespace {

using rataip::viewer::LapListModel;

QString textAt(const LapListModel& laps, int row, int column) {
    return laps.data(laps.index(row, column), Qt::DisplayRole).toString();
}

int keyAt(const LapListModel& laps, int row, int column) {
    return laps.data(laps.index(row, column), LapListModel::kSortRole).toInt();
}

TEST(LapList, HasARowForEachLapWithWhatItIs) {
    LapListModel laps;
    const QAbstractItemModelTester tester(&laps,
                                          QAbstractItemModelTester::FailureReportingMode::Fatal);
    laps.add(ownLap());
    ASSERT_EQ(laps.rowCount(), 1);
    const QStringList expected = {QStringLiteral("3"),        QStringLiteral("Ada Berg"),
                                  QStringLiteral("4"),        QStringLiteral("flying"),
                                  QStringLiteral("1:34.512"), QStringLiteral("yes"),
                                  QStringLiteral("1200"),     QStringLiteral("8")};
    for (int column = 0; column < LapListModel::ColumnCount; ++column) {
        EXPECT_EQ(textAt(laps, 0, column), expected.at(column));
        EXPECT_FALSE(laps.headerData(column, Qt::Horizontal, Qt::DisplayRole).toString().isEmpty());
    }
    EXPECT_TRUE(laps.data(laps.index(0, 0), Qt::FontRole).value<QFont>().bold());
}

TEST(LapList, LeavesOutLapsWithoutChannels) {
    LapListModel laps;
    laps.add(QSharedPointer<TLM::SDK::Lap>::create());
    EXPECT_EQ(laps.rowCount(), 0);
}

TEST(LapList, SortsSlotsByNumberAndLapsWithoutATimeLast) {
    LapListModel laps;
    laps.add(otherLap(10, 10));
    laps.add(otherLap(9, 10));
    laps.laps().at(1)->setLapTime(QTime(0, 59, 59));
    EXPECT_GT(keyAt(laps, 0, LapListModel::Slot), keyAt(laps, 1, LapListModel::Slot));
    EXPECT_LT(keyAt(laps, 0, LapListModel::Time), keyAt(laps, 1, LapListModel::Time));
    EXPECT_EQ(textAt(laps, 1, LapListModel::Time), QStringLiteral("no time"));
    EXPECT_FALSE(laps.data(laps.index(0, 0), Qt::FontRole).isValid());
}

TEST(LapList, ReleasesTheOldestLapsOfOtherCarsFirst) {
    // A lap of the own car has 8 channels here, one of another car 5.
    LapListModel laps(qsizetype{10} * (8 + 5 + 5));
    const QAbstractItemModelTester tester(&laps,
                                          QAbstractItemModelTester::FailureReportingMode::Fatal);
    laps.add(ownLap(1, 10));
    laps.add(otherLap(5, 10));
    laps.add(otherLap(6, 10));
    EXPECT_EQ(laps.released(), 0);
    laps.add(otherLap(7, 10));
    ASSERT_EQ(laps.rowCount(), 3);
    EXPECT_EQ(laps.released(), 1);
    EXPECT_EQ(textAt(laps, 0, LapListModel::Slot), QStringLiteral("3"));
    EXPECT_EQ(textAt(laps, 1, LapListModel::Slot), QStringLiteral("6"));
}

TEST(LapList, ReleasesTheOwnCarsOldestLapWhenThereAreNoOthers) {
    LapListModel laps(qsizetype{10} * 16);
    for (int number = 1; number <= 3; ++number) {
        laps.add(ownLap(number, 10));
    }
    ASSERT_EQ(laps.rowCount(), 2);
    EXPECT_EQ(textAt(laps, 0, LapListModel::Number), QStringLiteral("2"));
}

TEST(LapList, KeepsTheNewestLapHoweverLargeItIs) {
    LapListModel laps(10);
    laps.add(ownLap(1, 100));
    laps.add(otherLap(5, 100));
    ASSERT_EQ(laps.rowCount(), 1);
    EXPECT_EQ(textAt(laps, 0, LapListModel::Slot), QStringLiteral("5"));
}

TEST(LapList, CountsCalculatedChannelsToo) {
    LapListModel laps(15);
    for (int i = 0; i < 2; ++i) {
        const auto lap = QSharedPointer<TLM::SDK::Lap>::create();
        lap->addCalculatedChannel(channelWith(QList<double>(10, 1.0)), QStringLiteral("a"));
        laps.add(lap);
    }
    EXPECT_EQ(laps.rowCount(), 1);
}

}  // namespace
