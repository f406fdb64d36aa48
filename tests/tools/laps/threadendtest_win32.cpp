#include "tools/laps/threadend.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <thread>

namespace {

using rataip::laps::ThreadEnd;

std::atomic<bool> isTidy = false;

/** What the thread has to tidy up behind its function. */
struct SlowToGo {
    ~SlowToGo() {
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        isTidy = true;
    }
    bool isThere = false;
};

TEST(ThreadEnd, IsWaitedForUntilTheThreadHasTidiedUp) {
    std::atomic<bool> isOver = false;
    std::unique_ptr<ThreadEnd> end;
    std::thread([&] {
        thread_local SlowToGo slow;
        slow.isThere = true;
        end = std::make_unique<ThreadEnd>();
        isOver = true;
    }).detach();
    while (!isOver) {
        std::this_thread::yield();
    }
    end->wait();

    EXPECT_TRUE(isTidy);
}

}  // namespace
