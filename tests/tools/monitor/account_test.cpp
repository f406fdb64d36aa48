#include "tools/monitor/account.h"

#include "sdk/channel.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

namespace {

using rataip::monitor::Account;
using rataip::monitor::Console;
using TLM::SDK::CarStatus;
using TLM::SDK::Channel;
using TLM::SDK::DataEmitter;
using TLM::SDK::Lap;
using TLM::SDK::LapHeader;
using TLM::SDK::LapType;
using TLM::SDK::LivePluginInfo;
using TLM::SDK::Sample;

Sample sampleAtTick(int tick) {
    Sample sample;
    sample.setValue(QStringLiteral("sessiontick"), tick, QString());
    return sample;
}

class AccountOf : public ::testing::Test {
protected:
    /** The text printed since the last call. */
    QString takeText() { return std::exchange(m_text, QString()); }

    QString m_text;
    QTextStream m_stream{&m_text};
    DataEmitter m_emitter;
};

class AccountOnAPipe : public AccountOf {
protected:
    Console m_console{m_stream, false};
    Account m_account{m_emitter, m_console};
};

TEST_F(AccountOnAPipe, PrintsMessagesAsTheyAre) {
    emit m_emitter.sendMessage(QStringLiteral("[iRacing plugin] Connected"), 0);
    emit m_emitter.sendMessage(QStringLiteral("[iRacing plugin] detail"), 3);
    EXPECT_EQ(takeText(), QStringLiteral("[iRacing plugin] Connected\n[iRacing plugin] detail\n"));
}

TEST_F(AccountOnAPipe, PrintsALineForEveryFinishedLap) {
    const auto lap = QSharedPointer<Lap>::create();
    lap->setCarId(QStringLiteral("7"));
    lap->setDriverName(QStringLiteral("Ann Example"));
    lap->setDetailedTelemetry(true);
    lap->setLapType(LapType::FlyingLap);
    lap->setCompleted(true);
    lap->setLapTime(QTime(0, 1, 23, 456));
    const auto speed = QSharedPointer<Channel>::create();
    speed->samples = {1.0, 2.0, 3.0};
    lap->addChannel(speed, QStringLiteral("speed"));
    lap->addCalculatedChannel(speed, QStringLiteral("dt"));
    emit m_emitter.sendTelemetryLap(lap);
    EXPECT_EQ(takeText().simplified(),
              QStringLiteral("Lap * 7 Ann Example flying completed 1:23.456 3 samples 2 channels"));
}

TEST_F(AccountOnAPipe, PrintsADriversNameAsItIs) {
    const auto lap = QSharedPointer<Lap>::create();
    lap->setDriverName(QStringLiteral("%1 %2 %3"));
    lap->addChannel(QSharedPointer<Channel>::create(), QStringLiteral("speed"));
    emit m_emitter.sendTelemetryLap(lap);
    const QString text = takeText();
    EXPECT_TRUE(text.contains(QStringLiteral("%1 %2 %3"))) << text.toStdString();
    EXPECT_TRUE(text.simplified().endsWith(QStringLiteral("0 samples 1 channels")))
        << text.toStdString();
}

TEST_F(AccountOnAPipe, MarksOnlyTheOwnCarAndPrintsAnIncompleteLap) {
    const auto lap = QSharedPointer<Lap>::create();
    lap->setCarId(QStringLiteral("12"));
    lap->setDriverName(QStringLiteral("Bob"));
    lap->setDetailedTelemetry(false);
    lap->setLapType(LapType::OutLap);
    lap->setLapTime(QTime(0, 59, 59));
    lap->addChannel(QSharedPointer<Channel>::create(), QStringLiteral("speed"));
    emit m_emitter.sendTelemetryLap(lap);
    EXPECT_EQ(takeText().simplified(),
              QStringLiteral("Lap 12 Bob out not completed no time 0 samples 1 channels"));
}

TEST_F(AccountOnAPipe, LeavesOutLapsWithoutSamples) {
    emit m_emitter.sendTelemetryLap(QSharedPointer<Lap>::create());
    EXPECT_EQ(takeText(), QString());
    m_account.showSummary();
    EXPECT_TRUE(takeText().startsWith(QStringLiteral("0 laps")));
}

TEST_F(AccountOnAPipe, PrintsAnAnnouncedLap) {
    LapHeader header;
    header.setCarId(QStringLiteral("3"));
    header.setDriverName(QStringLiteral("Cid"));
    header.setDetailedTelemetry(false);
    header.setCompleted(true);
    header.setLapTime(QTime(0, 2, 0));
    emit m_emitter.sendTelemetryLapHeader(header);
    EXPECT_EQ(takeText().simplified(),
              QStringLiteral("Lap announced 3 Cid unknown completed 2:00.000"));
}

TEST_F(AccountOnAPipe, PrintsTheNamedCarsWhenTheyChange) {
    LivePluginInfo info;
    info.cars.resize(64);
    emit m_emitter.sendCarListChanged(info);
    EXPECT_EQ(takeText(), QString()) << "no car has a name yet";

    info.cars[5].setCarId(QStringLiteral("5"));
    info.cars[5].setDriverName(QStringLiteral("Ann"));
    info.cars[5].setTeamName(QStringLiteral("Blue"));
    info.cars[5].setCarName(QStringLiteral("Coupe"));
    info.cars[5].setClassName(QStringLiteral("GT"));
    info.cars[5].setStatus(CarStatus::InPitStall);
    emit m_emitter.sendCarListChanged(info);
    EXPECT_EQ(takeText().simplified(),
              QStringLiteral("1 cars, of which new or changed: 1 * 5 Ann Blue Coupe GT "
                             "In pit stall"));

    info.cars[5].setStatus(CarStatus::OutLap);
    emit m_emitter.sendCarListChanged(info);
    EXPECT_EQ(takeText(), QString()) << "a new status alone is not printed";

    info.cars[6].setCarId(QStringLiteral("6"));
    info.cars[6].setDriverName(QStringLiteral("Bob"));
    info.cars[6].setDetailedTelemetry(false);
    info.cars[6].setStatus(CarStatus::Undefined);
    emit m_emitter.sendCarListChanged(info);
    EXPECT_EQ(takeText(), QStringLiteral("2 cars, of which new or changed: 1\n    6  Bob\n"))
        << "no unknown status, and no spaces for missing texts";

    info.cars[5].setDriverName(QString());
    info.cars[6].setDriverName(QString());
    emit m_emitter.sendCarListChanged(info);
    EXPECT_EQ(takeText(), QStringLiteral("0 cars, of which new or changed: 0\n"));
}

TEST_F(AccountOnAPipe, PrintsProgressAndReachability) {
    emit m_emitter.sendProgress(40);
    emit m_emitter.sendConnectivityAvailable(true);
    emit m_emitter.sendConnectivityAvailable(false);
    EXPECT_EQ(takeText(), QStringLiteral("Progress: 40 %\nThe simulator can be reached\n"
                                         "The simulator cannot be reached\n"));
}

TEST_F(AccountOnAPipe, SaysNothingAboutAnAttemptThatFailed) {
    emit m_emitter.sendNotConnected();
    emit m_emitter.sendSessionInfo({});
    EXPECT_EQ(takeText(), QString());
    m_account.showWaiting();
    EXPECT_EQ(takeText(), QStringLiteral("Waiting for the simulator ...\n"));
    m_account.showNoSimulator();
    EXPECT_EQ(takeText(), QStringLiteral("No simulator delivers data; start one, or wait longer "
                                         "with --wait\n"));
}

TEST_F(AccountOnAPipe, SumsUpWhatHasArrived) {
    emit m_emitter.sendConnected();
    emit m_emitter.sendSamples({sampleAtTick(1), Sample()});
    emit m_emitter.sendSamples({sampleAtTick(4), Sample()});
    emit m_emitter.sendSample(sampleAtTick(5));
    emit m_emitter.sendDisconnected();
    emit m_emitter.sendConnected();
    emit m_emitter.sendSamples({sampleAtTick(500)});
    const auto lap = QSharedPointer<Lap>::create();
    lap->addChannel(QSharedPointer<Channel>::create(), QStringLiteral("speed"));
    emit m_emitter.sendTelemetryLap(lap);
    takeText();
    m_account.showSummary();
    EXPECT_EQ(takeText(), QStringLiteral("1 laps, 4 ticks received, 2 lost, 2 connections\n"));
}

class AccountOnATerminal : public AccountOf {
protected:
    Console m_console{m_stream, true};
    Account m_account{m_emitter, m_console};
};

TEST_F(AccountOnATerminal, ShowsTheStatusWhileConnectedAndRemovesItAfterwards) {
    constexpr int kGenerousMs = 20'000;
    emit m_emitter.sendConnected();
    emit m_emitter.sendSamples({sampleAtTick(1)});
    emit m_emitter.sendSamples({sampleAtTick(3)});
    ASSERT_TRUE(QTest::qWaitFor([this] { return !m_text.isEmpty(); }, kGenerousMs));
    const QString status = takeText();
    EXPECT_TRUE(
        status.contains(QStringLiteral("ticks/s, 1 lost; 0 cars, 0 on track, 0 in the "
                                       "pits; 0 laps")))
        << status.toStdString();
    EXPECT_FALSE(status.contains(QLatin1Char('\n')));

    takeText();
    emit m_emitter.sendDisconnected();
    EXPECT_TRUE(takeText().simplified().isEmpty());
    QTest::qWait(700);
    EXPECT_EQ(takeText(), QString()) << "no status while nothing is connected";
}

}  // namespace
