#include "tools/host/sourceconnector.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;
using rataip::host::SourceConnector;

// Only a failing test waits this long.
constexpr int kGenerousMs = 20'000;

/** A live source that the test switches on and off. */
class SwitchableSource : public TLM::SDK::PluginInterfaceLive {
public:
    void initialize() override {}
    void saveSettings(const QString&) override {}
    void loadSettings(const QString&) override {}
    QString sourceName() const override { return QStringLiteral("Switch"); }
    QString pluginName() const override { return QStringLiteral("Switch Plugin"); }
    QString pluginVersion() const override { return QStringLiteral("1"); }
    void checkConnectionAvailability() override {}

    void connectToSource() override {
        ++attempts;
        QTest::qSleep(attemptTakesMs);
        connected = isThere;
        if (connected) {
            emit emitter.sendConnected();
        } else {
            emit emitter.sendNotConnected();
        }
    }

    void disconnectFromSource() override {
        if (connected) {
            connected = false;
            emit emitter.sendDisconnected();
        }
    }

    /** Loses the connection. */
    void lose() {
        isThere = false;
        disconnectFromSource();
    }

    bool isThere = false;
    int attempts = 0;
    int attemptTakesMs = 0;
};

TEST(SourceConnector, ConnectsAtOnceToASourceThatIsThere) {
    SwitchableSource source;
    source.isThere = true;
    SourceConnector connector(source, std::nullopt);
    const QSignalSpy waiting(&connector, &SourceConnector::waiting);
    connector.start();
    EXPECT_TRUE(source.isConnected());
    EXPECT_EQ(waiting.count(), 0);
}

TEST(SourceConnector, ConnectsOnceASourceHasCome) {
    SwitchableSource source;
    SourceConnector connector(source, std::nullopt);
    QSignalSpy waiting(&connector, &SourceConnector::waiting);
    QSignalSpy connectedSpy(source.dataEmitter(), &TLM::SDK::DataEmitter::sendConnected);
    connector.start();
    EXPECT_FALSE(source.isConnected());
    EXPECT_EQ(waiting.count(), 1);

    QSignalSpy refused(source.dataEmitter(), &TLM::SDK::DataEmitter::sendNotConnected);
    ASSERT_TRUE(refused.wait(kGenerousMs));
    source.isThere = true;
    ASSERT_TRUE(connectedSpy.wait(kGenerousMs));
    EXPECT_EQ(waiting.count(), 1) << "one wait is reported once";
}

TEST(SourceConnector, ConnectsAgainToASourceThatWasLost) {
    SwitchableSource source;
    source.isThere = true;
    SourceConnector connector(source, std::nullopt);
    const QSignalSpy waiting(&connector, &SourceConnector::waiting);
    connector.start();
    for (int time = 1; time <= 2; ++time) {
        source.lose();
        EXPECT_EQ(waiting.count(), time);
        QSignalSpy connectedSpy(source.dataEmitter(), &TLM::SDK::DataEmitter::sendConnected);
        source.isThere = true;
        ASSERT_TRUE(connectedSpy.wait(kGenerousMs));
    }
}

TEST(SourceConnector, MakesNoAttemptWithinTheSignalOfTheLoss) {
    SwitchableSource source;
    source.isThere = true;
    SourceConnector connector(source, 0ms);
    connector.start();
    source.lose();
    EXPECT_EQ(source.attempts, 1);
}

TEST(SourceConnector, GivesUpAfterOneAttemptWithoutPatience) {
    SwitchableSource source;
    SourceConnector connector(source, 0ms);
    const QSignalSpy gaveUp(&connector, &SourceConnector::gaveUp);
    const QSignalSpy waiting(&connector, &SourceConnector::waiting);
    connector.start();
    EXPECT_EQ(gaveUp.count(), 1);
    EXPECT_EQ(waiting.count(), 0);
    EXPECT_EQ(source.attempts, 1);
}

TEST(SourceConnector, GivesUpWhenThePatienceIsOver) {
    SwitchableSource source;
    SourceConnector connector(source, 300ms);
    QSignalSpy gaveUp(&connector, &SourceConnector::gaveUp);
    connector.start();
    EXPECT_EQ(gaveUp.count(), 0);
    ASSERT_TRUE(gaveUp.wait(kGenerousMs));
    EXPECT_GE(source.attempts, 2) << "the last attempt comes when the patience is over";

    const int attemptsBefore = source.attempts;
    QSignalSpy refused(source.dataEmitter(), &TLM::SDK::DataEmitter::sendNotConnected);
    EXPECT_FALSE(refused.wait(600));
    EXPECT_EQ(source.attempts, attemptsBefore);
}

TEST(SourceConnector, HasItsWholePatienceAfterEveryLoss) {
    SwitchableSource source;
    source.isThere = true;
    SourceConnector connector(source, 0ms);
    QSignalSpy gaveUp(&connector, &SourceConnector::gaveUp);
    connector.start();
    source.lose();
    EXPECT_EQ(gaveUp.count(), 0);
    ASSERT_TRUE(gaveUp.wait(kGenerousMs));
    EXPECT_EQ(source.attempts, 2);
}

TEST(SourceConnector, DisconnectsAndStaysAwayOnceStopped) {
    SwitchableSource source;
    source.isThere = true;
    SourceConnector connector(source, std::nullopt);
    connector.start();
    const QSignalSpy waiting(&connector, &SourceConnector::waiting);
    connector.stop();
    EXPECT_FALSE(source.isConnected());
    EXPECT_EQ(waiting.count(), 0);
    QSignalSpy connectedSpy(source.dataEmitter(), &TLM::SDK::DataEmitter::sendConnected);
    EXPECT_FALSE(connectedSpy.wait(600));
}

TEST(SourceConnector, MakesNoFurtherAttemptWhenStoppedWhileWaiting) {
    SwitchableSource source;
    SourceConnector connector(source, std::nullopt);
    connector.start();
    connector.stop();
    QSignalSpy refused(source.dataEmitter(), &TLM::SDK::DataEmitter::sendNotConnected);
    EXPECT_FALSE(refused.wait(600));
}

TEST(SourceConnector, SaysThatItWaitsEachTimeItIsStarted) {
    SwitchableSource source;
    SourceConnector connector(source, std::nullopt);
    const QSignalSpy waiting(&connector, &SourceConnector::waiting);
    for (int time = 1; time <= 3; ++time) {
        connector.start();
        EXPECT_EQ(waiting.count(), time);
        connector.stop();
    }
}

TEST(SourceConnector, HasItsWholePatienceAfterEveryStart) {
    SwitchableSource source;
    SourceConnector connector(source, 300ms);
    QSignalSpy gaveUp(&connector, &SourceConnector::gaveUp);
    connector.start();
    connector.stop();
    QTest::qSleep(400);
    connector.start();
    EXPECT_EQ(gaveUp.count(), 0);
    EXPECT_TRUE(gaveUp.wait(kGenerousMs));
}

TEST(SourceConnector, LeavesMostOfItsThreadsTimeToOthers) {
    SwitchableSource source;
    source.attemptTakesMs = 200;
    SourceConnector connector(source, std::nullopt);
    QElapsedTimer sinceStart;
    sinceStart.start();
    connector.start();
    QSignalSpy refused(source.dataEmitter(), &TLM::SDK::DataEmitter::sendNotConnected);
    ASSERT_TRUE(refused.wait(kGenerousMs));
    EXPECT_GE(sinceStart.elapsed(), 4 * source.attemptTakesMs)
        << "an attempt, and a pause three times as long";
}

TEST(SourceConnector, IgnoresAConnectionThatIsNotItsOwn) {
    SwitchableSource source;
    SourceConnector connector(source, 0ms);
    const QSignalSpy gaveUp(&connector, &SourceConnector::gaveUp);
    const QSignalSpy waiting(&connector, &SourceConnector::waiting);
    source.connectToSource();
    EXPECT_EQ(gaveUp.count(), 0);
    EXPECT_EQ(waiting.count(), 0);
}

}  // namespace
