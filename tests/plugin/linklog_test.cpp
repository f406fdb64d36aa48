#include "tests/plugin/hostlog.h"
#include "tests/plugin/plugintest.h"

#include <cstddef>
#include <string>
#include <unistd.h>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr unsigned int kOtherUser = 4242;

class Log : public InitializedPluginTest {
protected:
    void attempt() {
        plugin->connectToSource();
        plugin->checkConnectionAvailability();
        plugin->connectToSource();
        EXPECT_FALSE(plugin->isConnected());
    }

    void giveBlockTo(unsigned int user) {
        simulator.publisher.command("chown " + std::to_string(user));
    }

    /** Ticks until the simulator counts as down. */
    void missUntilTheEnd() {
        simulator.nextTick();
        while (plugin->isConnected()) {
            plugin->tick();
        }
    }

    [[nodiscard]] QStringList takeLines() { return std::exchange(lines, {}); }

    static constexpr std::size_t kBufferLengthField = offsetof(irsdk_header, bufferLength);
    QStringList lines;
    HostLog log{[this](const QString& text) { lines.append(text); }};
    const unsigned int ownUser = geteuid();
    const QStringList foreignBlock{
        u"No data from the simulator: the block belongs to another user"_s};
};

}  // namespace

TEST_F(Log, ReportsARepeatedReasonOnce) {
    giveBlockTo(kOtherUser);
    attempt();
    EXPECT_EQ(takeLines(), foreignBlock);
    attempt();
    EXPECT_EQ(takeLines(), QStringList());
}

TEST_F(Log, ReportsTheReasonAgainAfterASuccess) {
    giveBlockTo(kOtherUser);
    attempt();
    giveBlockTo(ownUser);
    connectAndTick();
    plugin->disconnectFromSource();
    EXPECT_EQ(takeLines(), foreignBlock);
    giveBlockTo(kOtherUser);
    attempt();
    EXPECT_EQ(takeLines(), foreignBlock);
}

TEST_F(Log, ReportsEachOfTwoReasons) {
    giveBlockTo(kOtherUser);
    attempt();
    giveBlockTo(ownUser);
    simulator.publisher.command("chown " + std::to_string(kOtherUser) + " event");
    attempt();
    EXPECT_EQ(takeLines(),
              foreignBlock + QStringList{u"No data from the simulator: the data-valid event "
                                         u"belongs to another user"_s});
}

TEST_F(Log, ReportsNothingWithoutASimulator) {
    simulator.publisher.command("unlink event");
    attempt();
    simulator.publisher.command("unlink");
    attempt();
    EXPECT_EQ(takeLines(), QStringList());
}

TEST_F(Log, ReportsNothingForASimulatorWithoutData) {
    attempt();
    EXPECT_EQ(takeLines(), QStringList());
}

TEST_F(Log, ReportsWhyDataStopped) {
    connectAndTick();
    simulator.publisher.poke(kBufferLengthField, 0);
    missUntilTheEnd();
    EXPECT_EQ(takeLines(),
              QStringList{u"No data from the simulator: the block points outside itself"_s});
}

TEST_F(Log, DoesNotReportAnEarlierFailureAtANormalEnd) {
    connectAndTick();
    simulator.publisher.poke(kBufferLengthField, 0);
    simulator.nextTick();
    plugin->tick();
    simulator.publisher.poke(kBufferLengthField, simulator.block.header().bufferLength);
    tick();
    ASSERT_EQ(host.samples.size(), 1);
    simulator.publisher.setStatus(0);
    missUntilTheEnd();
    EXPECT_EQ(takeLines(), QStringList());
}
