#pragma once

#include "plugin/irpluginlive.h"
#include "tests/plugin/hostrecorder.h"
#include "tests/plugin/stagedsimulator.h"
#include "tests/support/openobjects.h"
#include "tests/support/printqt.h"

#include <QPointer>
#include <QTimer>

#include <gtest/gtest.h>

/**
 * A plugin with a recording host and a simulator that a test moves by hand. At the start nothing is
 * published or initialized. No event loop runs unless a test runs one, so only the test's own ticks
 * happen.
 */
class PluginTest : public ::testing::Test {
protected:
    using OpenObjects = testsupport::OpenObjects;

    PluginTest() : PluginTest(new iRPluginLive) {}
    /** With another plugin, which the fixture deletes. */
    explicit PluginTest(iRPluginLive* made) : plugin(made), host(plugin->dataEmitter()) {}
    ~PluginTest() override { delete plugin.data(); }

    void initialize() {
        plugin->initialize();
        host.forget();
    }

    /** Connects while the simulator runs. */
    void connectWhileRunning() {
        simulator.run();
        plugin->connectToSource();
        simulator.stop();
    }

    void connectAndProbe() {
        plugin->connectToSource();
        plugin->checkConnectionAvailability();
    }

    /** Connects, does one tick, and forgets the signals. */
    void connectAndTick() {
        connectWhileRunning();
        ASSERT_TRUE(plugin->isConnected());
        tick();
        host.forget();
    }

    /** Connects, and marks the newest snapshot as seen by the link. */
    void connectWithoutUnreadData() {
        connectWhileRunning();
        ASSERT_TRUE(plugin->isConnected());
        irsdk_getNewData(nullptr);
    }

    /** One snapshot and the tick that takes it. */
    void tick() {
        simulator.nextTick();
        plugin->tick();
    }

    /** Ticks that find nothing new, but do not wait for the time-out. */
    void ticksWithoutData(int count) {
        simulator.runWithoutData();
        for (int i = 0; i < count; ++i) {
            plugin->tick();
        }
        simulator.stop();
    }

    [[nodiscard]] QTimer* timer() const {
        const QList<QTimer*> timers = plugin->findChildren<QTimer*>();
        return timers.size() == 1 ? timers.first() : nullptr;
    }

    /** A value of the last list of samples. */
    [[nodiscard]] QVariant value(int car, const QString& name) const {
        return host.lastSamples().value(car).value(name).value;
    }

    [[nodiscard]] QString driverName(int car) const {
        return host.lastCarList().cars.value(car).driverName();
    }

    static constexpr int kOwnCar = StagedSimulator::kOwnCar;
    static constexpr int kFastCar = StagedSimulator::kFastCar;
    static constexpr int kSlowCar = StagedSimulator::kSlowCar;

    // The signals of connecting and disconnecting, without car lists.
    const QStringList connecting{QStringLiteral("Connected"),
                                 QStringLiteral("Message [iRacing plugin] Connected (0)")};
    const QStringList disconnecting{QStringLiteral("Disconnected"),
                                    QStringLiteral("Message [iRacing plugin] Disconnected (0)")};

    StagedSimulator simulator;
    QPointer<iRPluginLive> plugin;
    HostRecorder host;
};

/** The same with a published simulator and an initialized plugin. */
class InitializedPluginTest : public PluginTest {
protected:
    void SetUp() override {
        simulator.publish();
        initialize();
    }
};

/** The same, connected. */
class ConnectedPluginTest : public InitializedPluginTest {
protected:
    void SetUp() override {
        InitializedPluginTest::SetUp();
        connectAndTick();
    }
};
