#include "tests/plugin/plugintest.h"

using namespace Qt::StringLiterals;

namespace {

/** A plugin derived from ours, with other names and another disconnectFromSource(). */
class RenamedPlugin : public iRPluginLive {
public:
    QString sourceName() const override { return u"Other Source"_s; }
    QString pluginName() const override { return u"Other Plugin"_s; }

    void disconnectFromSource() override {
        ++disconnections;
        iRPluginLive::disconnectFromSource();
    }

    int disconnections = 0;
};

class Subclass : public PluginTest {
protected:
    Subclass()
        : PluginTest(new RenamedPlugin), renamed(static_cast<RenamedPlugin*>(plugin.data())) {
        simulator.publish();
    }

    RenamedPlugin* renamed;
};

}  // namespace

TEST_F(Subclass, NamesThePluginAndTheSourceInTheCarList) {
    plugin->initialize();
    EXPECT_EQ(host.lastCarList().pluginName(), u"Other Plugin"_s);
    EXPECT_EQ(host.lastCarList().sourceName(), u"Other Source"_s);
}

TEST_F(Subclass, NamesTheSourceInEveryMessage) {
    initialize();
    connectWhileRunning();
    EXPECT_EQ(host.count(u"Message [Other Source plugin] Connected (0)"_s), 1);
}

TEST_F(Subclass, NamesThePluginAndTheSourceInEveryLap) {
    initialize();
    connectAndTick();
    tick();
    tick();
    simulator.crossLine(kFastCar);
    tick();
    ASSERT_EQ(host.laps().size(), 1);
    EXPECT_EQ(host.laps().first()->pluginName(), u"Other Plugin"_s);
    EXPECT_EQ(host.laps().first()->source(), u"Other Source"_s);
}

TEST_F(Subclass, DisconnectsInItsOwnWayWhenTheSimulatorIsDown) {
    constexpr int kOneMissTooMany = 101;
    initialize();
    connectWithoutUnreadData();
    ticksWithoutData(kOneMissTooMany);
    EXPECT_FALSE(plugin->isConnected());
    EXPECT_EQ(renamed->disconnections, 1);
}
