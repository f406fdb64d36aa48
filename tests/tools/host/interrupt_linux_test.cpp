#include "tools/host/endrequestblocker.h"
#include "tools/host/interrupt.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

#include <csignal>
#include <thread>

namespace {

using rataip::host::EndRequestBlocker;
using rataip::host::Interrupt;

// Only a failing test waits this long.
constexpr int kGenerousMs = 20'000;

bool isBlocked(int signal) {
    sigset_t mask;
    sigemptyset(&mask);
    pthread_sigmask(SIG_BLOCK, nullptr, &mask);
    return sigismember(&mask, signal) == 1;
}

bool isBlockedInNewThread(int signal) {
    bool isBlockedThere = false;
    std::thread([&] { isBlockedThere = isBlocked(signal); }).join();
    return isBlockedThere;
}

TEST(EndRequestBlocker, BlocksRequestsToEndInThreadsStartedMeanwhile) {
    const EndRequestBlocker blocker;
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        EXPECT_TRUE(isBlockedInNewThread(number)) << number;
    }
    EXPECT_FALSE(isBlockedInNewThread(SIGQUIT)) << "which is for programs that hang";
}

TEST(EndRequestBlocker, RestoresTheSignalsOfItsOwnThread) {
    { const EndRequestBlocker blocker; }
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        EXPECT_FALSE(isBlocked(number)) << number;
    }
}

class InterruptBy : public ::testing::TestWithParam<int> {};

TEST_P(InterruptBy, IsReportedOnceInTheEventLoop) {
    Interrupt interrupt;
    QSignalSpy requested(&interrupt, &Interrupt::requested);
    raise(GetParam());
    EXPECT_EQ(requested.count(), 0) << "not before the event loop runs";
    ASSERT_TRUE(requested.wait(kGenerousMs));
    EXPECT_EQ(requested.count(), 1);
}

TEST_P(InterruptBy, LeavesASecondCtrlCToTheSystem) {
    Interrupt interrupt;
    QSignalSpy requested(&interrupt, &Interrupt::requested);
    EXPECT_TRUE(isBlocked(SIGINT));
    EXPECT_TRUE(isBlocked(SIGTERM));
    raise(GetParam());
    ASSERT_TRUE(requested.wait(kGenerousMs));
    EXPECT_FALSE(isBlocked(SIGINT));
    EXPECT_TRUE(isBlocked(SIGTERM)) << "one end may come as several signals";
}

INSTANTIATE_TEST_SUITE_P(Signal, InterruptBy, ::testing::Values(SIGINT, SIGTERM, SIGHUP),
                         [](const auto& parameter) {
                             return std::string(parameter.param == SIGINT    ? "CtrlC"
                                                : parameter.param == SIGTERM ? "Terminate"
                                                                             : "EndOfTerminal");
                         });

TEST(Interrupt, LeavesTheEndOfTheTerminalAloneWhenItIsIgnored) {
    std::signal(SIGHUP, SIG_IGN);
    {
        Interrupt interrupt;
        QSignalSpy requested(&interrupt, &Interrupt::requested);
        EXPECT_FALSE(isBlocked(SIGHUP));
        raise(SIGHUP);
        raise(SIGTERM);
        ASSERT_TRUE(requested.wait(kGenerousMs));
        EXPECT_EQ(requested.count(), 1);
    }
    std::signal(SIGHUP, SIG_DFL);
}

TEST(Interrupt, DropsAnotherRequestThatArrivesWhileTheProgramEnds) {
    Interrupt interrupt;
    QSignalSpy requested(&interrupt, &Interrupt::requested);
    raise(SIGINT);
    raise(SIGTERM);
    ASSERT_TRUE(requested.wait(kGenerousMs));
    EXPECT_EQ(requested.count(), 1);
}

TEST(Interrupt, RestoresTheSignalsAtItsEnd) {
    { const Interrupt interrupt; }
    EXPECT_FALSE(isBlocked(SIGINT));
    EXPECT_FALSE(isBlocked(SIGTERM));
    EXPECT_FALSE(isBlocked(SIGHUP));
}

}  // namespace
