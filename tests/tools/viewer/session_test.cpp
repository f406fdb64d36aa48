#include "tools/viewer/session.h"

#include "tests/tools/laps/samplelap.h"
#include "tests/tools/viewer/handsource.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

namespace {

using rataip::viewer::Session;
using State = rataip::viewer::Session::State;
using TLM::SDK::Lap;

TEST(ViewerSession, BeginsWithoutAPlugin) {
    Session session;
    EXPECT_EQ(session.state(), State::NoPlugin);
    EXPECT_TRUE(session.pluginText().isEmpty());
    session.probe();
    session.connectToSource();
    session.disconnectFromSource();
    EXPECT_EQ(session.state(), State::NoPlugin);
}

TEST(ViewerSession, SaysWhyAPluginCannotBeLoaded) {
    Session session;
    QSignalSpy changes(&session, &Session::stateChanged);
    EXPECT_FALSE(session.loadPlugin(QStringLiteral("/no/such/plugin.so")));
    EXPECT_EQ(session.state(), State::NoPlugin);
    EXPECT_TRUE(session.pluginError().contains(QStringLiteral("there is no such file")));
    EXPECT_EQ(changes.size(), 1);
}

TEST(ViewerSession, InitialisesItsSourceOnceAndForgetsTheError) {
    HandSource source;
    Session session;
    session.setPluginError(QStringLiteral("no"));
    session.setSource(source);
    EXPECT_EQ(source.initialized, 1);
    EXPECT_EQ(session.state(), State::Disconnected);
    EXPECT_TRUE(session.pluginError().isEmpty());
    EXPECT_EQ(session.pluginText(), QStringLiteral("Hand Plugin 1.0 for Hand"));
}

TEST(ViewerSession, ConnectsAndDisconnects) {
    HandSource source;
    Session session;
    session.setSource(source);
    session.connectToSource();
    EXPECT_EQ(session.state(), State::Connected);
    session.disconnectFromSource();
    EXPECT_EQ(session.state(), State::Disconnected);
    EXPECT_FALSE(source.isConnected());
}

TEST(ViewerSession, WaitsForASimulatorAndConnectsWhenItComes) {
    HandSource source;
    source.isThere = false;
    Session session;
    session.setSource(source);
    session.connectToSource();
    EXPECT_EQ(session.state(), State::Waiting);
    QSignalSpy changes(&session, &Session::stateChanged);
    source.isThere = true;
    EXPECT_TRUE(changes.wait());
    EXPECT_EQ(session.state(), State::Connected);
}

TEST(ViewerSession, WaitsAgainWhenTheSimulatorIsLost) {
    HandSource source;
    Session session;
    session.setSource(source);
    session.connectToSource();
    source.isThere = false;
    source.disconnectFromSource();
    EXPECT_EQ(session.state(), State::Waiting);
    EXPECT_FALSE(session.isDataArriving());
    session.disconnectFromSource();
    EXPECT_EQ(session.state(), State::Disconnected);
}

TEST(ViewerSession, WaitsAgainWhenReconnectedWithoutASimulator) {
    HandSource source;
    source.isThere = false;
    Session session;
    session.setSource(source);
    for (int time = 0; time < 2; ++time) {
        session.connectToSource();
        EXPECT_EQ(session.state(), State::Waiting);
        session.disconnectFromSource();
        EXPECT_EQ(session.state(), State::Disconnected);
    }
}

TEST(ViewerSession, ReportsWhatAProbeFound) {
    HandSource source;
    Session session;
    session.setSource(source);
    QSignalSpy probed(&session, &Session::probed);
    session.probe();
    source.isThere = false;
    session.probe();
    ASSERT_EQ(probed.size(), 2);
    EXPECT_TRUE(probed.at(0).at(0).toBool());
    EXPECT_FALSE(probed.at(1).at(0).toBool());
}

TEST(ViewerSession, StoresEveryTick) {
    HandSource source;
    Session session;
    session.setSource(source);
    session.connectToSource();
    EXPECT_FALSE(session.isDataArriving());
    source.sendCars(3, 1);
    source.sendTick(3, 1, 100, 0.5);
    source.sendTick(3, 1, 103, 0.6);
    EXPECT_TRUE(session.isDataArriving());
    EXPECT_EQ(session.ticks().received(), 2U);
    EXPECT_EQ(session.ticks().lost(), 2U);
    EXPECT_EQ(session.field().cars().size(), 3);
    EXPECT_EQ(session.liveLap().current()[0].size(), 2);
}

TEST(ViewerSession, ForgetsPositionsWhenTheSourceIsLost) {
    HandSource source;
    Session session;
    session.setSource(source);
    session.connectToSource();
    source.sendCars(3, 1);
    source.sendTick(3, 1, 100, 0.5);
    session.disconnectFromSource();
    EXPECT_FALSE(session.field().cars().at(0).isInWorld());
    EXPECT_FALSE(session.isDataArriving());
}

TEST(ViewerSession, DrawsNoLiveLapOfAnUnknownOwnCar) {
    HandSource source;
    Session session;
    session.setSource(source);
    session.connectToSource();
    source.sendCars(3, -1);
    source.sendTick(3, 1, 100, 0.5);
    EXPECT_TRUE(session.liveLap().current()[0].isEmpty());
}

TEST(ViewerSession, PassesOnMessagesAndLapsWithChannels) {
    HandSource source;
    Session session;
    session.setSource(source);
    QSignalSpy messages(&session, &Session::message);
    QSignalSpy laps(&session, &Session::lapArrived);
    source.message(QStringLiteral("Hello"), 0);
    emit source.dataEmitter()->sendTelemetryLap(ownLap());
    emit source.dataEmitter()->sendTelemetryLap(QSharedPointer<Lap>::create());
    EXPECT_EQ(messages.value(0).value(0).toString(), QStringLiteral("[Hand plugin] Hello"));
    EXPECT_EQ(laps.size(), 1);
    EXPECT_EQ(session.liveLap().previousRevision(), 1);
}

TEST(ViewerSession, DisconnectsItsSourceAtTheEnd) {
    HandSource source;
    {
        Session session;
        session.setSource(source);
        session.connectToSource();
    }
    EXPECT_FALSE(source.isConnected());
    emit source.dataEmitter()->sendConnected();
}

}  // namespace
