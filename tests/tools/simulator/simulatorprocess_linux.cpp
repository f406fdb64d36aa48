#include "tests/tools/simulator/simulatorprocess_linux.h"

#include <array>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::seconds kPatience(60);

}  // namespace

SimulatorProcess::SimulatorProcess(const std::vector<std::string>& arguments) {
    int input[2];
    int output[2];
    int errors[2];
    if (::pipe2(input, O_CLOEXEC) != 0 || ::pipe2(output, O_CLOEXEC) != 0 ||
        ::pipe2(errors, O_CLOEXEC) != 0) {
        return;
    }
    std::vector<std::string> texts = arguments;
    texts.insert(texts.begin(), SIMULATOR_PROGRAM);
    std::vector<char*> words;
    words.reserve(texts.size() + 1);
    for (std::string& text : texts) {
        words.push_back(text.data());
    }
    words.push_back(nullptr);
    m_process = ::fork();
    if (m_process == 0) {
        ::dup2(input[0], STDIN_FILENO);
        ::dup2(output[1], STDOUT_FILENO);
        ::dup2(errors[1], STDERR_FILENO);
        ::execv(words[0], words.data());
        ::_exit(127);
    }
    ::close(input[0]);
    ::close(output[1]);
    ::close(errors[1]);
    m_input = input[1];
    m_outputEnd = output[0];
    m_errorEnd = errors[0];
    std::signal(SIGPIPE, SIG_IGN);
}

SimulatorProcess::~SimulatorProcess() {
    closeInput();
    if (m_process > 0) {
        ::kill(m_process, SIGKILL);
        ::waitpid(m_process, nullptr, 0);
    }
    ::close(m_outputEnd);
    ::close(m_errorEnd);
}

void SimulatorProcess::tell(const std::string& line) {
    const std::string bytes = line + "\n";
    for (std::size_t written = 0; written < bytes.size();) {
        const ssize_t count = ::write(m_input, bytes.data() + written, bytes.size() - written);
        if (count <= 0) {
            return;
        }
        written += static_cast<std::size_t>(count);
    }
}

void SimulatorProcess::closeInput() {
    if (m_input >= 0) {
        ::close(m_input);
        m_input = -1;
    }
}

std::string SimulatorProcess::readLine() {
    const Clock::time_point end = Clock::now() + kPatience;
    while (m_pending.find('\n') == std::string::npos) {
        if (Clock::now() > end || !fill(m_outputEnd, m_pending, 1000)) {
            return {};
        }
    }
    const std::size_t length = m_pending.find('\n');
    std::string line = m_pending.substr(0, length);
    m_pending.erase(0, length + 1);
    return line;
}

std::string SimulatorProcess::readUntil(const std::string& start) {
    while (true) {
        std::string line = readLine();
        if (line.empty() || line.rfind(start, 0) == 0) {
            return line;
        }
    }
}

void SimulatorProcess::sendSignal(int number) const {
    ::kill(m_process, number);
}

int SimulatorProcess::wait() {
    const Clock::time_point end = Clock::now() + kPatience;
    int status = 0;
    while (::waitpid(m_process, &status, WNOHANG) == 0) {
        if (Clock::now() > end) {
            return -1000;
        }
        fill(m_outputEnd, m_pending, 5);
        fill(m_errorEnd, m_errors, 5);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    m_process = -1;
    while (fill(m_outputEnd, m_pending, 0)) {
    }
    while (fill(m_errorEnd, m_errors, 0)) {
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

// True when it makes sense to call it again: bytes came, or they may still come.
bool SimulatorProcess::fill(int descriptor, std::string& text, int atMostMilliseconds) {
    pollfd source{descriptor, POLLIN, 0};
    if (::poll(&source, 1, atMostMilliseconds) == 0) {
        return atMostMilliseconds > 0;
    }
    std::array<char, 65536> bytes{};
    const ssize_t count = ::read(descriptor, bytes.data(), bytes.size());
    if (count > 0) {
        text.append(bytes.data(), static_cast<std::size_t>(count));
    }
    return count > 0;
}
