#include "tests/tools/monitor/exportwatch.h"

#include <QDir>
#include <QFile>
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

TEST(MonitorExport, GoesOnWhenNothingCanBeSaved) {
    const QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("taken")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ExportWatch watch(file.fileName() + QStringLiteral("/laps"));
    EXPECT_EQ(watch.waitForEnd(), 0) << watch.output();
    const std::string sentence = "A lap was not saved: cannot make the folder ";
    const std::size_t first = watch.output().find(sentence);
    ASSERT_NE(first, std::string::npos) << watch.output();
    EXPECT_EQ(watch.output().find(sentence, first + 1), std::string::npos) << watch.output();
}

}  // namespace
