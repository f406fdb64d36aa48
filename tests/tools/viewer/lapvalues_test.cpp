#include "tools/viewer/lapvalues.h"

#include "tests/tools/laps/samplelap.h"

#include <gtest/gtest.h>

namespace {

using rataip::viewer::lapTitle;
using rataip::viewer::lapValues;

QStringList rowNamed(const QStandardItemModel& table, const QString& name) {
    QStringList row;
    const QList<QStandardItem*> found = table.findItems(name);
    if (found.size() == 1) {
        for (int column = 1; column < table.columnCount(); ++column) {
            row.append(table.item(found.constFirst()->row(), column)->text());
        }
    }
    return row;
}

TEST(LapValues, ListsTheHeaderAndTheValuesWithUnits) {
    const auto lap = ownLap();
    lap->setValue(QStringLiteral("Fuel"), 42.5, QStringLiteral("l"));
    const auto table = lapValues(*lap);
    EXPECT_EQ(rowNamed(*table, QStringLiteral("driverName")).value(0), QStringLiteral("Ada Berg"));
    EXPECT_EQ(rowNamed(*table, QStringLiteral("lapTime")).value(0), QStringLiteral("1:34.512"));
    EXPECT_EQ(rowNamed(*table, QStringLiteral("completed")).value(0), QStringLiteral("yes"));
    EXPECT_EQ(rowNamed(*table, QStringLiteral("detailedTelemetry")).value(0),
              QStringLiteral("yes"));
    EXPECT_EQ(rowNamed(*table, QStringLiteral("lapInSession")).value(0), QStringLiteral("4"));
    EXPECT_EQ(rowNamed(*table, QStringLiteral("Fuel")),
              (QStringList{QStringLiteral("42.5"), QStringLiteral("l")}));
}

TEST(LapValues, SaysThatALapHasNoTime) {
    const auto table = lapValues(TLM::SDK::Lap());
    EXPECT_EQ(rowNamed(*table, QStringLiteral("lapTime")).value(0), QStringLiteral("no time"));
    EXPECT_EQ(rowNamed(*table, QStringLiteral("completed")).value(0), QStringLiteral("no"));
}

TEST(LapTitle, NamesTheDriverTheLapAndItsTime) {
    EXPECT_EQ(lapTitle(*ownLap()), QStringLiteral("Ada Berg, lap 4, 1:34.512"));
}

TEST(LapTitle, TakesADriversNameAsItIs) {
    const auto lap = ownLap();
    lap->setDriverName(QStringLiteral("%1 %2 %3"));
    EXPECT_EQ(lapTitle(*lap), QStringLiteral("%1 %2 %3, lap 4, 1:34.512"));
}

}  // namespace
