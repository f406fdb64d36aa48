#include "tests/tools/laps/slowcleanup.h"
#include "tools/laps/threadend.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>

namespace {

using rataip::laps::ThreadEnd;

TEST(ThreadEnd, WaitsUntilTheThreadHasCleanedUp) {
    std::atomic<bool> isOver = false;
    std::unique_ptr<ThreadEnd> end;
    std::thread([&] {
        thread_local SlowCleanup slow;
        slow.isThere = true;
        end = std::make_unique<ThreadEnd>();
        isOver = true;
    }).detach();
    while (!isOver) {
        std::this_thread::yield();
    }
    end->wait();

    EXPECT_TRUE(SlowCleanup::isDone);
}

}  // namespace
