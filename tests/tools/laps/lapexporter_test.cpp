#include "tools/laps/lapexporter.h"

#include "tests/tools/laps/samplelap.h"
#include "tools/laps/lapcsv.h"
#include "tools/laps/lapjson.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

using rataip::laps::csvFormat;
using rataip::laps::jsonFormat;
using rataip::laps::LapExporter;
using rataip::laps::LapFormat;
using TLM::SDK::Lap;

QStringList filesIn(const QTemporaryDir& folder) {
    return QDir(folder.path()).entryList(QDir::Files, QDir::Name);
}

TEST(LapExporter, WritesAFileForEachFormatAndReportsThem) {
    const QTemporaryDir folder;
    LapExporter exporter(QDir(folder.path()), {csvFormat(), jsonFormat()});
    QSignalSpy written(&exporter, &LapExporter::written);
    exporter.add(ownLap());
    exporter.finish();
    ASSERT_EQ(written.size(), 1);
    const QString name = QStringLiteral("car03_Ada-Berg_practice_lap4_flying_1m34s512");
    EXPECT_EQ(written.constFirst().constFirst().toStringList(),
              (QStringList{folder.filePath(name + QStringLiteral(".csv")),
                           folder.filePath(name + QStringLiteral(".json"))}));
    EXPECT_EQ(filesIn(folder).size(), 2);
}

TEST(LapExporter, MakesItsFolder) {
    const QTemporaryDir folder;
    LapExporter exporter(QDir(folder.filePath(QStringLiteral("a/b"))), {csvFormat()});
    exporter.add(ownLap());
    exporter.finish();
    EXPECT_EQ(QDir(folder.filePath(QStringLiteral("a/b"))).count(), 3U) << "and . and ..";
}

TEST(LapExporter, OverwritesNothing) {
    const QTemporaryDir folder;
    LapExporter exporter(QDir(folder.path()), {csvFormat(), jsonFormat()});
    for (int time = 0; time < 3; ++time) {
        exporter.add(ownLap());
    }
    exporter.finish();
    EXPECT_EQ(filesIn(folder).size(), 6);
}

TEST(LapExporter, WritesAllFilesOfALapUnderOneName) {
    const QTemporaryDir folder;
    const QString name = QStringLiteral("car03_Ada-Berg_practice_lap4_flying_1m34s512");
    QFile taken(folder.filePath(name + QStringLiteral(".json")));
    ASSERT_TRUE(taken.open(QIODevice::WriteOnly));
    LapExporter exporter(QDir(folder.path()), {csvFormat(), jsonFormat()});
    QSignalSpy written(&exporter, &LapExporter::written);
    exporter.add(ownLap());
    exporter.finish();
    ASSERT_EQ(written.size(), 1);
    EXPECT_EQ(written.constFirst().constFirst().toStringList(),
              (QStringList{folder.filePath(name + QStringLiteral("_1.csv")),
                           folder.filePath(name + QStringLiteral("_1.json"))}));
}

TEST(LapExporter, LeavesOutLapsWithoutChannels) {
    const QTemporaryDir folder;
    LapExporter exporter(QDir(folder.path()), {csvFormat()});
    QSignalSpy written(&exporter, &LapExporter::written);
    exporter.add(QSharedPointer<Lap>::create());
    exporter.finish();
    EXPECT_EQ(written.size(), 0);
    EXPECT_TRUE(filesIn(folder).isEmpty());
}

TEST(LapExporter, WritesEveryLapBeforeItIsDestroyed) {
    const QTemporaryDir folder;
    {
        LapExporter exporter(QDir(folder.path()), {csvFormat()});
        for (int lap = 1; lap <= 5; ++lap) {
            exporter.add(ownLap(lap));
        }
    }
    EXPECT_EQ(filesIn(folder).size(), 5);
}

TEST(LapExporter, ReportsAFolderThatCannotBeMadeAndGoesOn) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("taken"));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.close();
    LapExporter exporter(QDir(path), {csvFormat()});
    QSignalSpy failed(&exporter, &LapExporter::failed);
    QSignalSpy written(&exporter, &LapExporter::written);
    exporter.add(ownLap(1));
    exporter.add(ownLap(2));
    exporter.finish();
    EXPECT_EQ(failed.size(), 2);
    ASSERT_TRUE(file.remove());
    exporter.add(ownLap(3));
    exporter.finish();
    EXPECT_EQ(written.size(), 1);
}

TEST(LapExporter, WritesALapWholeOrNotAtAll) {
    const QTemporaryDir folder;
    const LapFormat broken{QStringLiteral("bad"), [](const Lap&, QIODevice&) { return false; }};
    LapExporter exporter(QDir(folder.path()), {csvFormat(), broken, jsonFormat()});
    QSignalSpy failed(&exporter, &LapExporter::failed);
    exporter.add(ownLap());
    exporter.finish();
    EXPECT_EQ(failed.size(), 1);
    EXPECT_TRUE(filesIn(folder).isEmpty());
}

TEST(LapExporter, WritesOnAnotherThreadThanItsOwn) {
    const QTemporaryDir folder;
    QThread* writer = nullptr;
    const LapFormat format{QStringLiteral("x"), [&writer](const Lap&, QIODevice&) {
                               writer = QThread::currentThread();
                               return true;
                           }};
    LapExporter exporter(QDir(folder.path()), {format});
    exporter.add(ownLap());
    exporter.finish();
    EXPECT_NE(writer, nullptr);
    EXPECT_NE(writer, QThread::currentThread());
}

}  // namespace
