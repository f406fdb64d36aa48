#include "tools/simulator/console.h"
#include "tools/simulator/text.h"

#include <array>
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <string_view>
#include <thread>
#include <utility>
#include <windows.h>

// Needs windows.h before it.
#include <timeapi.h>

namespace simulator {

namespace {

std::atomic<bool> stopAsked = false;
std::atomic<bool> done = false;

// Runs on a thread of the system. After the console is closed or the user logs off, the system
// kills the process as soon as this returns, so it waits until the run has ended in order.
BOOL WINAPI askToStop(DWORD event) {
    stopAsked = true;
    constexpr int kPatienceSteps = 400;
    constexpr DWORD kStepMilliseconds = 10;
    const bool killed = event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT;
    for (int step = 0; killed && !done && step < kPatienceSteps; ++step) {
        ::Sleep(kStepMilliseconds);
    }
    return TRUE;
}

constexpr UINT kTimerMilliseconds = 1;

}  // namespace

// A pipe's handle cannot be waited for, so a thread reads standard input. The thread shares
// ownership of its buffer, because it may still be waiting for input when the console is destroyed.
// It must never end while the process ends, which could then hang in the compiler's runtime.
class Console::Input : public std::enable_shared_from_this<Console::Input> {
public:
    void start() {
        m_thread = std::thread([self = shared_from_this()] { self->readAll(); });
    }

    void leave() {
        std::unique_lock lock(m_mutex);
        m_isLeft = true;
        const bool hasEnded = m_ended;
        lock.unlock();
        if (hasEnded) {
            m_thread.join();
        } else {
            m_thread.detach();
        }
    }

    bool ended() {
        const std::lock_guard lock(m_mutex);
        return m_ended && m_pending.empty();
    }

    std::optional<std::string> takeLine(std::chrono::milliseconds atMost) {
        std::unique_lock lock(m_mutex);
        m_arrived.wait_for(lock, atMost, [this] { return m_ended || hasLine(); });
        return simulator::takeLine(m_pending, m_ended);
    }

private:
    bool hasLine() const { return m_pending.find('\n') != std::string::npos; }

    void readAll() {
        const HANDLE input = ::GetStdHandle(STD_INPUT_HANDLE);
        std::array<char, 4096> bytes{};
        DWORD count = 0;
        while (::ReadFile(input, bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr) !=
                   0 &&
               count > 0) {
            take({bytes.data(), count});
        }
        take({});
    }

    /** Takes what was read. Empty at the end of the input. */
    void take(std::string_view bytes) {
        std::unique_lock lock(m_mutex);
        if (m_isLeft) {
            lock.unlock();
            ::Sleep(INFINITE);
        }
        m_pending.append(bytes);
        m_ended = bytes.empty();
        m_arrived.notify_one();
    }

    std::mutex m_mutex;
    std::condition_variable m_arrived;
    std::string m_pending;
    bool m_ended = false;
    bool m_isLeft = false;
    std::thread m_thread;
};

Console::Console(bool readsLines) : m_input(readsLines ? std::make_shared<Input>() : nullptr) {
    ::SetConsoleCtrlHandler(askToStop, TRUE);
    // The default timer ticks 64 times a second, which is too coarse for 60 snapshots a second.
    ::timeBeginPeriod(kTimerMilliseconds);
    if (m_input) {
        m_input->start();
    }
}

Console::~Console() {
    if (m_input) {
        m_input->leave();
    }
    ::timeEndPeriod(kTimerMilliseconds);
    done = true;
}

bool Console::stopRequested() const {
    return stopAsked;
}

std::optional<std::string> Console::nextLine(std::chrono::milliseconds atMost) {
    if (!m_input || stopRequested()) {
        return std::nullopt;
    }
    return m_input->takeLine(atMost);
}

bool Console::inputEnded() const {
    return m_input && m_input->ended();
}

}  // namespace simulator
