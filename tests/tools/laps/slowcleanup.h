#pragma once

#include <atomic>
#include <chrono>
#include <thread>

/** Takes its time to be destroyed: as a thread_local, after the thread's function has returned. */
struct SlowCleanup {
    ~SlowCleanup() {
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        isDone = true;
    }
    bool isThere = false;

    static inline std::atomic<bool> isDone = false;
};
