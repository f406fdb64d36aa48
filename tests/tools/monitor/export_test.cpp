#include "tests/tools/monitor/exportwatch.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

TEST(MonitorExport, SavesTheLapsThatItSees) {
    const QTemporaryDir folder;
    const QString laps = folder.filePath(QStringLiteral("laps"));
    ExportWatch watch(laps);
    EXPECT_EQ(watch.waitForEnd(), 0) << watch.output();
    EXPECT_NE(watch.output().find(" laps saved in "), std::string::npos) << watch.output();
    const QStringList tables = QDir(laps).entryList({QStringLiteral("*.csv")});
    EXPECT_GE(tables.size(), 4) << watch.output();
    EXPECT_EQ(QDir(laps).entryList({QStringLiteral("*.json")}).size(), tables.size());
    EXPECT_EQ(QDir(laps).entryList({QStringLiteral("*.png")}).size(), tables.size());
}

}  // namespace
