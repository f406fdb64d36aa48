#include "tools/monitor/lapsaver.h"

#include "tests/tools/laps/samplelap.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTextStream>

#include <gtest/gtest.h>

namespace {

using rataip::monitor::Console;
using rataip::monitor::LapSaver;
using TLM::SDK::DataEmitter;
using TLM::SDK::Lap;

class Saver : public ::testing::Test {
protected:
    QTemporaryDir folder;
    DataEmitter emitter;
    QString output;
    QTextStream stream{&output};
    Console console{stream, false};
};

TEST_F(Saver, SavesEachLapInThreeFormatsAndCountsThem) {
    const QString target = folder.filePath(QStringLiteral("laps"));
    LapSaver saver(emitter, console, target);
    emit emitter.sendTelemetryLap(ownLap());
    emit emitter.sendTelemetryLap(otherLap());
    emit emitter.sendTelemetryLap(QSharedPointer<Lap>::create());
    saver.finish();
    EXPECT_TRUE(saver.hasSavedAll());
    EXPECT_EQ(output, QStringLiteral("2 laps saved in %1\n").arg(QDir::toNativeSeparators(target)));
    for (const char* suffix : {"*.csv", "*.json", "*.png"}) {
        EXPECT_EQ(QDir(target).entryList({QString::fromLatin1(suffix)}).size(), 2) << suffix;
    }
}

TEST_F(Saver, SaysOnceThatLapsCannotBeSaved) {
    const QString target = folder.filePath(QStringLiteral("taken"));
    QFile file(target);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    LapSaver saver(emitter, console, target);
    emit emitter.sendTelemetryLap(ownLap());
    emit emitter.sendTelemetryLap(otherLap());
    saver.finish();
    EXPECT_EQ(output.count(QStringLiteral("A lap was not saved: cannot write into ")), 1)
        << output.toStdString();
    EXPECT_TRUE(output.contains(QStringLiteral("0 of 2 laps saved, 2 not, in ")));
    EXPECT_FALSE(saver.hasSavedAll());
}

TEST_F(Saver, ReportsAFailureAgainAfterALapThatCouldBeSaved) {
    const QString target = folder.filePath(QStringLiteral("taken"));
    QFile file(target);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    LapSaver saver(emitter, console, target);
    emit emitter.sendTelemetryLap(ownLap(1));
    saver.finish();
    ASSERT_TRUE(file.remove());
    emit emitter.sendTelemetryLap(ownLap(2));
    saver.finish();
    EXPECT_TRUE(output.endsWith(
        QStringLiteral("1 of 2 laps saved, 1 not, in %1\n").arg(QDir::toNativeSeparators(target))))
        << output.toStdString();
    ASSERT_TRUE(QDir(target).removeRecursively());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    emit emitter.sendTelemetryLap(ownLap(3));
    saver.finish();
    EXPECT_EQ(output.count(QStringLiteral("A lap was not saved: ")), 2) << output.toStdString();
}

}  // namespace
