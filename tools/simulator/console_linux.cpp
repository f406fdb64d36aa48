#include "tools/simulator/console.h"
#include "tools/simulator/text.h"

#include <array>
#include <csignal>
#include <poll.h>
#include <unistd.h>

namespace simulator {

namespace {

// Of a type that a signal handler may write to.
volatile std::sig_atomic_t stopAsked = 0;

void askToStop(int) {
    stopAsked = 1;
}

}  // namespace

class Console::Input {
public:
    bool ended() const { return m_ended && m_pending.empty(); }

    std::optional<std::string> takeLine() { return simulator::takeLine(m_pending, m_ended); }

    void read(std::chrono::milliseconds atMost) {
        pollfd input{STDIN_FILENO, POLLIN, 0};
        if (m_ended || ::poll(&input, 1, static_cast<int>(atMost.count())) <= 0) {
            return;
        }
        std::array<char, 4096> bytes{};
        const ssize_t count = ::read(STDIN_FILENO, bytes.data(), bytes.size());
        if (count <= 0) {
            m_ended = true;
        } else {
            m_pending.append(bytes.data(), static_cast<std::size_t>(count));
        }
    }

private:
    std::string m_pending;
    bool m_ended = false;
};

Console::Console(bool readsLines) : m_input(readsLines ? std::make_shared<Input>() : nullptr) {
    struct sigaction action {};
    action.sa_handler = askToStop;
    sigemptyset(&action.sa_mask);
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        ::sigaction(number, &action, nullptr);
    }
    // The simulator must end in order even when the reader of its output is gone.
    std::signal(SIGPIPE, SIG_IGN);
}

Console::~Console() = default;

bool Console::stopRequested() const {
    return stopAsked != 0;
}

std::optional<std::string> Console::nextLine(std::chrono::milliseconds atMost) {
    if (!m_input || stopRequested()) {
        return std::nullopt;
    }
    std::optional<std::string> line = m_input->takeLine();
    if (!line) {
        m_input->read(atMost);
        line = m_input->takeLine();
    }
    return line;
}

bool Console::inputEnded() const {
    return m_input && m_input->ended();
}

}  // namespace simulator
