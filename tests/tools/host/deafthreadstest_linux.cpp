#include "tools/host/deafthreads.h"

#include <gtest/gtest.h>

#include <csignal>
#include <thread>

namespace {

using rataip::host::DeafThreads;

bool isHeldBackHere(int number) {
    sigset_t mask;
    sigemptyset(&mask);
    pthread_sigmask(SIG_BLOCK, nullptr, &mask);
    return sigismember(&mask, number) == 1;
}

bool isHeldBackInAThread(int number) {
    bool isHeldBack = false;
    std::thread([&] { isHeldBack = isHeldBackHere(number); }).join();
    return isHeldBack;
}

TEST(DeafThreads, AreLeftAloneByRequestsToEnd) {
    const DeafThreads deafThreads;
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        EXPECT_TRUE(isHeldBackInAThread(number)) << number;
    }
    EXPECT_FALSE(isHeldBackInAThread(SIGQUIT)) << "which is for programs that hang";
}

TEST(DeafThreads, LeaveTheOneThatStartedThemAsItWas) {
    { const DeafThreads deafThreads; }
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        EXPECT_FALSE(isHeldBackHere(number)) << number;
    }
}

}  // namespace
