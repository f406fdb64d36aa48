#pragma once

#include <memory>

namespace rataip::laps {

/**
 * Waits for the system's end of the thread that creates the object. QThread::wait() may return
 * while the thread is still cleaning up after its last event. A program that ends at this moment
 * can hang in the runtime of some compilers for Windows.
 */
class ThreadEnd {
public:
    ThreadEnd();
    ~ThreadEnd();
    ThreadEnd(const ThreadEnd&) = delete;
    ThreadEnd& operator=(const ThreadEnd&) = delete;

    /** Returns when the thread has ended. Call it from another thread. */
    void wait();

private:
    struct Thread;
    std::unique_ptr<Thread> m_thread;
};

}  // namespace rataip::laps
