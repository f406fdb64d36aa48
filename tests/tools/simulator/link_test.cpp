#include "irsdk/irsdk.h"
#include "irsdk/layout.h"
#include "tests/support/simulatorprocess.h"
#include "tools/simulator/checksum.h"
#include "tools/simulator/variabletable.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <iostream>
#include <span>
#include <string>
#include <vector>

using namespace simulator;
using testsupport::onShortTrack;
using testsupport::SimulatorProcess;

namespace {

constexpr int kTicks = 1000;
const std::vector<std::string> kLockstep = onShortTrack(6, {"--lockstep"});
constexpr std::size_t kNoPlace = std::numeric_limits<std::size_t>::max();

/** The simulator in a process of its own, read through the link. */
class SimulatorLink : public ::testing::Test {
protected:
    void SetUp() override { irsdk_shutdown(); }
    void TearDown() override { irsdk_shutdown(); }

    static void open() { ASSERT_TRUE(irsdk_startup()) << irsdk_errorText(irsdk_lastError()); }

    /** One tick in lock step. */
    static void step(SimulatorProcess& program) { ASSERT_TRUE(program.step().has_value()); }

    /** The offset of an int variable in the snapshot, from the published table. */
    static std::size_t placeOf(const char* name) {
        const int offset = irsdk_varNameToOffset(name);
        return offset < 0 ? kNoPlace : static_cast<std::size_t>(offset);
    }

    void makeRoom() {
        irsdk_header header{};
        ASSERT_TRUE(irsdk_copyHeader(header));
        snapshot.resize(static_cast<std::size_t>(header.bufferLength));
        checksumAt = placeOf(kChecksumName);
        tickAt = placeOf("SessionTick");
        ASSERT_NE(checksumAt, kNoPlace);
        ASSERT_NE(tickAt, kNoPlace);
    }

    [[nodiscard]] bool takes(int timeOut) {
        return irsdk_waitForDataReady(timeOut, snapshot.data(), static_cast<int>(snapshot.size()));
    }

    [[nodiscard]] std::int32_t intAt(std::size_t place) const {
        std::int32_t value = 0;
        std::memcpy(&value, snapshot.data() + place, sizeof value);
        return value;
    }

    [[nodiscard]] bool isTorn() const {
        return snapshotChecksum(std::as_bytes(std::span(snapshot)), checksumAt) !=
               intAt(checksumAt);
    }

    static std::int32_t status() { return irsdk_getHeader()->status & irsdk_stConnected; }

    std::vector<char> snapshot;
    std::size_t checksumAt = kNoPlace;
    std::size_t tickAt = kNoPlace;
};

}  // namespace

TEST_F(SimulatorLink, TakesEveryTickOfARunInLockStep) {
    SimulatorProcess program(kLockstep);
    ASSERT_TRUE(program.publishes());
    open();
    makeRoom();
    step(program);
    ASSERT_FALSE(takes(0)) << "the first look only notes the tick";
    for (int tick = 2; tick <= kTicks + 1; ++tick) {
        step(program);
        ASSERT_TRUE(takes(0)) << tick;
        ASSERT_FALSE(isTorn()) << tick;
        ASSERT_EQ(intAt(tickAt), tick);
        ASSERT_FALSE(takes(0)) << tick;
    }
}

// The run's own tick count reveals ticks that are neither delivered nor counted as skipped.
TEST_F(SimulatorLink, AccountsForAThousandTicksOfARunByTheClock) {
    constexpr int kTicksPerSecond = 60;
    constexpr int kAllTicks = 40 * kTicksPerSecond;  // enough to begin seconds late
    SimulatorProcess program(onShortTrack(
        6, {"--speed", "4", "--duration", std::to_string(kAllTicks / kTicksPerSecond)}));
    ASSERT_TRUE(program.publishes());
    open();
    makeRoom();
    int delivered = 0;
    int skipped = 0;
    int last = 0;
    int first = 0;
    const auto end =
        std::chrono::steady_clock::now() + std::chrono::milliseconds(SimulatorProcess::kPatience);
    bool isOver = false;
    while (!isOver && std::chrono::steady_clock::now() < end) {
        if (!takes(1000)) {
            isOver = status() == 0;
            continue;
        }
        ASSERT_FALSE(isTorn()) << last;
        const int tick = intAt(tickAt);
        if (first == 0) {
            first = tick;
        } else {
            ASSERT_GT(tick, last);
            ++delivered;
            skipped += tick - last - 1;
        }
        last = tick;
    }
    EXPECT_TRUE(isOver);
    EXPECT_EQ(delivered + skipped, last - first);
    EXPECT_GE(last - first, kTicks);
    EXPECT_GE(delivered, kTicks / 10) << "even on a machine that is busy with other things";
    const std::string account = program.readLineThatBegins("Ended after ");
    EXPECT_EQ(account, "Ended after " + std::to_string(kAllTicks) + " ticks.");
    EXPECT_LE(last, kAllTicks);
    RecordProperty("delivered", delivered);
    RecordProperty("skipped", skipped);
    std::cout << delivered << " ticks delivered, " << skipped << " skipped\n";
}

TEST_F(SimulatorLink, FindsTheStatusClearedAfterAnOrderlyEnd) {
    SimulatorProcess program(kLockstep);
    ASSERT_TRUE(program.publishes());
    open();
    ASSERT_EQ(status(), irsdk_stConnected);

    EXPECT_EQ(program.quit(), 0);
    EXPECT_EQ(status(), 0);
    EXPECT_FALSE(irsdk_isConnected());
}

// Several times, because a thread of the program ends at the same moment.
TEST_F(SimulatorLink, FindsTheStatusClearedAfterTheEndOfTheInput) {
    constexpr int kRuns = 10;
    for (int run = 0; run < kRuns; ++run) {
        SimulatorProcess program(kLockstep);
        ASSERT_TRUE(program.publishes());
        open();

        program.closeInput();

        ASSERT_EQ(program.waitForExit(), 0) << run;
        EXPECT_EQ(status(), 0) << run;
        irsdk_shutdown();
    }
}

TEST_F(SimulatorLink, FindsTheStatusClearedAfterTheSimulatorWasAskedToEnd) {
    SimulatorProcess program(onShortTrack(6), SimulatorProcess::Console::Own);
    ASSERT_TRUE(program.publishes());
    open();

    program.askToEnd();

    EXPECT_EQ(program.waitForExit(), 0);
    EXPECT_EQ(status(), 0);
}

TEST_F(SimulatorLink, ReadsTheSimulatorThatFollowsACrashedOne) {
    SimulatorProcess crashed(kLockstep);
    ASSERT_TRUE(crashed.publishes());
    open();
    makeRoom();
    step(crashed);
    crashed.kill();
    irsdk_shutdown();

    SimulatorProcess next(kLockstep);
    ASSERT_TRUE(next.publishes());
    open();
    step(next);
    ASSERT_FALSE(takes(0));
    step(next);
    ASSERT_TRUE(takes(0));
    EXPECT_EQ(intAt(tickAt), 2);
}

TEST_F(SimulatorLink, LeavesTheObjectsToTheSimulatorThatCameFirst) {
    SimulatorProcess first(kLockstep);
    ASSERT_TRUE(first.publishes());
    SimulatorProcess second({"--lockstep"});

    constexpr int kCouldNotStart = 2;
    EXPECT_EQ(second.waitForExit(), kCouldNotStart);
    open();
    makeRoom();
    step(first);
    EXPECT_FALSE(takes(0));
    step(first);
    EXPECT_TRUE(takes(0));
}

TEST_F(SimulatorLink, SendsCommandsWithTheirSigns) {
    SimulatorProcess program(kLockstep);
    ASSERT_TRUE(program.publishes());

    irsdk_broadcastMsg(irsdk_BroadcastMsg{3}, -5, 70000);
    EXPECT_NE(program.readLineThatBegins("Broadcast message 3 (-5, 70000), number "), "");
    irsdk_broadcastMsg(irsdk_BroadcastMsg{12}, 0x7FFF, std::numeric_limits<int>::min());
    EXPECT_NE(program.readLineThatBegins("Broadcast message 12 (32767, -2147483648), number "), "");
}
