#pragma once

#include <atomic>
#include <chrono>
#include <thread>

/** What a thread has to tidy up after its function: a thread_local one takes its time for it. */
struct SlowToGo {
    ~SlowToGo() {
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        isTidy = true;
    }
    bool isThere = false;

    static inline std::atomic<bool> isTidy = false;
};
