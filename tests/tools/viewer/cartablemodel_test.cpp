#include "tools/viewer/cartablemodel.h"

#include <QAbstractItemModelTester>
#include <QFont>
#include <QSignalSpy>

#include <gtest/gtest.h>

namespace {

using rataip::viewer::CarState;
using rataip::viewer::CarTableModel;

CarState car(int slot, bool isOwn = false) {
    CarState state;
    state.info.setCarId(QString::number(slot));
    state.info.setDriverName(QStringLiteral("Driver %1").arg(slot));
    state.info.setTeamName(QStringLiteral("Team"));
    state.info.setCarName(QStringLiteral("Car"));
    state.info.setClassName(QStringLiteral("GT"));
    state.info.setStatus(TLM::SDK::CarStatus::FlyingLap);
    state.info.setDetailedTelemetry(isOwn);
    state.share = 0.5;
    state.lap = 5;
    state.lastLapSeconds = 83.4567;
    state.position = slot + 1;
    return state;
}

QVariant at(const CarTableModel& cars, int row, int column, int role = Qt::DisplayRole) {
    return cars.data(cars.index(row, column), role);
}

TEST(CarTable, ShowsEachCarInARow) {
    CarTableModel cars;
    const QAbstractItemModelTester tester(&cars,
                                          QAbstractItemModelTester::FailureReportingMode::Fatal);
    cars.setCars({car(3)});
    const QStringList expected = {
        QStringLiteral("4"),          QStringLiteral("3"),   QStringLiteral("Driver 3"),
        QStringLiteral("Team"),       QStringLiteral("Car"), QStringLiteral("GT"),
        QStringLiteral("Flying lap"), QStringLiteral("5"),   QStringLiteral("1:23.456")};
    for (int column = 0; column < CarTableModel::ColumnCount; ++column) {
        EXPECT_EQ(at(cars, 0, column).toString(), expected.at(column));
        EXPECT_FALSE(cars.headerData(column, Qt::Horizontal, Qt::DisplayRole).toString().isEmpty());
    }
}

TEST(CarTable, MarksTheOwnCarByMoreThanAColour) {
    CarTableModel cars;
    cars.setCars({car(0), car(1, true)});
    EXPECT_EQ(at(cars, 1, CarTableModel::Driver).toString(), QStringLiteral("▶ Driver 1"));
    EXPECT_TRUE(at(cars, 1, 0, Qt::FontRole).value<QFont>().bold());
    EXPECT_FALSE(at(cars, 0, 0, Qt::FontRole).isValid());
}

TEST(CarTable, GreysCarsThatAreNotInTheWorldAndPutsThemLast) {
    CarTableModel cars;
    QPalette palette;
    palette.setColor(QPalette::Disabled, QPalette::Text, Qt::magenta);
    cars.setPalette(palette);
    CarState gone = car(0);
    gone.share.reset();
    gone.position.reset();
    gone.lap.reset();
    gone.lastLapSeconds.reset();
    cars.setCars({gone, car(1)});
    EXPECT_EQ(at(cars, 0, 0, Qt::ForegroundRole).value<QBrush>().color(), QColor(Qt::magenta));
    EXPECT_FALSE(at(cars, 1, 0, Qt::ForegroundRole).isValid());
    for (const int column : {CarTableModel::Position, CarTableModel::Lap, CarTableModel::LastLap}) {
        EXPECT_EQ(at(cars, 0, column).toString(), QStringLiteral("–"));
        EXPECT_GT(at(cars, 0, column, CarTableModel::kSortRole).toDouble(),
                  at(cars, 1, column, CarTableModel::kSortRole).toDouble());
    }
}

TEST(CarTable, SortsSlotsByNumber) {
    CarTableModel cars;
    cars.setCars({car(10), car(9)});
    EXPECT_GT(at(cars, 0, CarTableModel::Slot, CarTableModel::kSortRole).toInt(),
              at(cars, 1, CarTableModel::Slot, CarTableModel::kSortRole).toInt());
}

TEST(CarTable, ReportsOnlyRowsThatChanged) {
    CarTableModel cars;
    cars.setCars({car(0), car(1), car(2)});
    QSignalSpy changes(&cars, &CarTableModel::dataChanged);
    CarState moved = car(1);
    moved.share = 0.51;
    cars.setCars({car(0), moved, car(2)});
    EXPECT_EQ(changes.size(), 0) << "the distance is not in the table";
    moved.position = 1;
    cars.setCars({car(0), moved, car(2)});
    ASSERT_EQ(changes.size(), 1);
    EXPECT_EQ(changes.constFirst().constFirst().toModelIndex().row(), 1);
    moved.share.reset();
    cars.setCars({car(0), moved, car(2)});
    EXPECT_EQ(changes.size(), 2) << "it is grey now";
}

TEST(CarTable, IsResetWhenADriverChanges) {
    CarTableModel cars;
    cars.setCars({car(0), car(1)});
    QSignalSpy resets(&cars, &CarTableModel::modelReset);
    CarState relieved = car(1);
    relieved.info.setDriverName(QStringLiteral("A driver with a longer name"));
    cars.setCars({car(0), relieved});
    EXPECT_EQ(resets.size(), 1) << "so that its column can be widened";
    cars.setCars({car(0), relieved});
    EXPECT_EQ(resets.size(), 1);
}

TEST(CarTable, TakesMoreAndFewerCars) {
    CarTableModel cars;
    const QAbstractItemModelTester tester(&cars,
                                          QAbstractItemModelTester::FailureReportingMode::Fatal);
    cars.setCars({car(0), car(1)});
    cars.setCars({car(0)});
    EXPECT_EQ(cars.rowCount(), 1);
    cars.setCars({});
    EXPECT_EQ(cars.rowCount(), 0);
}

TEST(CarTable, ShowsNoLapTimeLongerThanADay) {
    CarTableModel cars;
    CarState slow = car(0);
    slow.lastLapSeconds = 1e12;
    cars.setCars({slow});
    EXPECT_EQ(at(cars, 0, CarTableModel::LastLap).toString(), QStringLiteral("–"));
}

}  // namespace
