#pragma once

#include <memory>

namespace rataip::laps {

/**
 * The end of the thread that makes it, as the system sees it. QThread::wait() may return while the
 * thread still tidies up behind its last event; a program that ends at this very moment can be
 * caught in the runtime of some compilers for Windows.
 */
class ThreadEnd {
public:
    ThreadEnd();
    ~ThreadEnd();
    ThreadEnd(const ThreadEnd&) = delete;
    ThreadEnd& operator=(const ThreadEnd&) = delete;

    /** Returns when nothing of the thread is left; to be called by another one. */
    void wait();

private:
    struct Thread;
    std::unique_ptr<Thread> m_thread;
};

}  // namespace rataip::laps
