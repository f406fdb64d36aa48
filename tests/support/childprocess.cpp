#include "tests/support/childprocess.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <thread>

namespace testsupport {

namespace {

constexpr int kMoment = 10;  // milliseconds

/** The time left until a time-out. */
class Patience {
public:
    explicit Patience(int milliseconds) : m_end(Clock::now() + Milliseconds(milliseconds)) {}

    [[nodiscard]] int left() const {
        const auto left = std::chrono::ceil<Milliseconds>(m_end - Clock::now());
        return static_cast<int>(std::max<Milliseconds::rep>(left.count(), 0));
    }

private:
    using Clock = std::chrono::steady_clock;
    using Milliseconds = std::chrono::milliseconds;

    Clock::time_point m_end;
};

int countOf(const std::string& text, const std::string& in) {
    int count = 0;
    for (std::size_t at = in.find(text); at != std::string::npos; at = in.find(text, at + 1)) {
        ++count;
    }
    return count;
}

}  // namespace

ChildProcess::ChildProcess(const std::string& program, const std::vector<std::string>& arguments,
                           Console console)
    : ChildProcess() {
    if (!start(program, arguments, console)) {
        std::fprintf(stderr, "ChildProcess: %s cannot be started\n", program.c_str());
    }
}

std::optional<std::string> ChildProcess::readLine(int timeOut) {
    const Patience patience(timeOut);
    std::size_t end = m_output.find('\n', m_unread);
    while (end == std::string::npos) {
        const std::size_t known = m_output.size();
        if (!fill(patience.left())) {
            return std::nullopt;
        }
        end = m_output.find('\n', known);
    }
    std::string line = m_output.substr(m_unread, end - m_unread);
    m_unread = end + 1;
    return line;
}

std::string ChildProcess::readLineThatBegins(const std::string& start, int timeOut) {
    const Patience patience(timeOut);
    std::optional<std::string> line = readLine(timeOut);
    while (line && !line->starts_with(start)) {
        line = readLine(patience.left());
    }
    return line.value_or("");
}

bool ChildProcess::waitForOutput(const std::string& text, int times, int timeOut) {
    const Patience patience(timeOut);
    while (countOf(text, m_output) < times) {
        if (!fill(patience.left())) {
            return false;
        }
    }
    return true;
}

std::optional<int> ChildProcess::waitForExit(int timeOut) {
    const Patience patience(timeOut);
    // A program blocks, and never ends, when nobody reads its output.
    while (isRunning() && patience.left() > 0) {
        if (!fill(std::min(kMoment, patience.left()))) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }
    if (isRunning()) {
        return std::nullopt;
    }
    while (fill(0)) {
    }
    return exitStatus();
}

}  // namespace testsupport
