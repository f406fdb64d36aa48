#include "tools/host/interrupt.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

#include <csignal>

namespace {

using rataip::host::Interrupt;

// For what is awaited; generous, since it is waited out only when a test fails.
constexpr int generousMs = 20'000;

bool isHeldBack(int signal) {
    sigset_t mask;
    sigemptyset(&mask);
    pthread_sigmask(SIG_BLOCK, nullptr, &mask);
    return sigismember(&mask, signal) == 1;
}

class InterruptBy : public ::testing::TestWithParam<int> {};

TEST_P(InterruptBy, IsReportedOnceInTheEventLoop) {
    Interrupt interrupt;
    QSignalSpy requested(&interrupt, &Interrupt::requested);
    raise(GetParam());
    EXPECT_EQ(requested.count(), 0) << "not before the event loop runs";
    ASSERT_TRUE(requested.wait(generousMs));
    EXPECT_EQ(requested.count(), 1);
}

TEST_P(InterruptBy, LeavesASecondCtrlCToTheSystem) {
    Interrupt interrupt;
    QSignalSpy requested(&interrupt, &Interrupt::requested);
    EXPECT_TRUE(isHeldBack(SIGINT));
    EXPECT_TRUE(isHeldBack(SIGTERM));
    raise(GetParam());
    ASSERT_TRUE(requested.wait(generousMs));
    EXPECT_FALSE(isHeldBack(SIGINT));
    EXPECT_TRUE(isHeldBack(SIGTERM)) << "a second signal of the same ending is no reason to hurry";
}

INSTANTIATE_TEST_SUITE_P(Signal, InterruptBy, ::testing::Values(SIGINT, SIGTERM, SIGHUP),
                         [](const auto& parameter) {
                             return std::string(parameter.param == SIGINT    ? "CtrlC"
                                                : parameter.param == SIGTERM ? "Terminate"
                                                                             : "EndOfTerminal");
                         });

TEST(Interrupt, LeavesTheEndOfTheTerminalAloneWhereItIsIgnored) {
    std::signal(SIGHUP, SIG_IGN);
    {
        Interrupt interrupt;
        QSignalSpy requested(&interrupt, &Interrupt::requested);
        EXPECT_FALSE(isHeldBack(SIGHUP));
        raise(SIGHUP);
        raise(SIGTERM);
        ASSERT_TRUE(requested.wait(generousMs));
        EXPECT_EQ(requested.count(), 1);
    }
    std::signal(SIGHUP, SIG_DFL);
}

TEST(Interrupt, SwallowsAnotherRequestThatCameWhileTheProgramEnded) {
    Interrupt interrupt;
    QSignalSpy requested(&interrupt, &Interrupt::requested);
    raise(SIGINT);
    raise(SIGTERM);
    ASSERT_TRUE(requested.wait(generousMs));
    EXPECT_EQ(requested.count(), 1);
}

TEST(Interrupt, LeavesTheSignalsAsTheyWereWhenItGoes) {
    { const Interrupt interrupt; }
    EXPECT_FALSE(isHeldBack(SIGINT));
    EXPECT_FALSE(isHeldBack(SIGTERM));
    EXPECT_FALSE(isHeldBack(SIGHUP));
}

}  // namespace
