#include "tools/laps/threadend.h"

#include <windows.h>

namespace rataip::laps {

struct ThreadEnd::Thread {
    HANDLE handle = nullptr;
};

ThreadEnd::ThreadEnd() : m_thread(std::make_unique<Thread>()) {
    // GetCurrentThread() is a pseudo handle, which means the calling thread in every thread.
    DuplicateHandle(GetCurrentProcess(), GetCurrentThread(), GetCurrentProcess(), &m_thread->handle,
                    SYNCHRONIZE, FALSE, 0);
}

ThreadEnd::~ThreadEnd() {
    if (m_thread->handle != nullptr) {
        CloseHandle(m_thread->handle);
    }
}

void ThreadEnd::wait() {
    if (m_thread->handle != nullptr) {
        WaitForSingleObject(m_thread->handle, INFINITE);
    }
}

}  // namespace rataip::laps
