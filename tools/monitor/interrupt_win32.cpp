#include "tools/monitor/interrupt.h"

#include <QMetaObject>

#include <atomic>
#include <windows.h>

namespace rataip::monitor {

namespace {

// The system calls the handler on a thread of its own and passes nothing of ours along.
std::atomic<Interrupt*> listening = nullptr;

BOOL WINAPI onConsoleEvent(DWORD) {
    Interrupt* const interrupt = listening.exchange(nullptr);
    if (interrupt == nullptr) {
        return FALSE;
    }
    QMetaObject::invokeMethod(interrupt, &Interrupt::requested, Qt::QueuedConnection);
    return TRUE;
}

}  // namespace

/** Is registered with the console for as long as it lives. */
class Interrupt::Listener {
public:
    explicit Listener(Interrupt& interrupt) {
        listening = &interrupt;
        SetConsoleCtrlHandler(onConsoleEvent, TRUE);
    }

    ~Listener() {
        SetConsoleCtrlHandler(onConsoleEvent, FALSE);
        listening = nullptr;
    }

    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;
};

Interrupt::Interrupt() : m_listener(std::make_unique<Listener>(*this)) {}

Interrupt::~Interrupt() = default;

}  // namespace rataip::monitor
