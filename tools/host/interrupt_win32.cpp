#include "tools/host/interrupt.h"

#include <QMetaObject>

#include <atomic>
#include <mutex>
#include <windows.h>

namespace rataip::host {

namespace {

// The system calls the handler on a thread of its own and without an argument of ours. The lock
// keeps the object alive while the handler uses it.
std::mutex listenerLock;
Interrupt* listening = nullptr;

std::atomic<bool> ended = false;

bool passOn() {
    const std::lock_guard guard(listenerLock);
    if (listening == nullptr) {
        return false;
    }
    QMetaObject::invokeMethod(listening, &Interrupt::requested, Qt::QueuedConnection);
    listening = nullptr;
    return true;
}

// After the console is closed or the user logs off, the system kills the process as soon as the
// handler returns. So it waits until the program has ended in order, within the time that the
// system allows.
void waitForTheEnd() {
    constexpr int kSteps = 400;
    constexpr DWORD kStepMilliseconds = 10;
    for (int step = 0; !ended && step < kSteps; ++step) {
        Sleep(kStepMilliseconds);
    }
}

BOOL WINAPI onConsoleEvent(DWORD event) {
    if (!passOn()) {
        return FALSE;
    }
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) {
        waitForTheEnd();
    }
    return TRUE;
}

void listenWith(Interrupt* interrupt) {
    const std::lock_guard guard(listenerLock);
    listening = interrupt;
}

}  // namespace

/** Registered with the console during its lifetime. */
class Interrupt::Listener {
public:
    explicit Listener(Interrupt& interrupt) {
        ended = false;
        listenWith(&interrupt);
        SetConsoleCtrlHandler(onConsoleEvent, TRUE);
    }

    ~Listener() {
        listenWith(nullptr);
        // First, because the next call may wait for a running handler.
        ended = true;
        SetConsoleCtrlHandler(onConsoleEvent, FALSE);
    }

    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;
};

Interrupt::Interrupt() : m_listener(std::make_unique<Listener>(*this)) {}

Interrupt::~Interrupt() = default;

}  // namespace rataip::host
