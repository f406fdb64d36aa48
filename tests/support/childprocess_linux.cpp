#include "tests/support/childprocess.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

namespace testsupport {

namespace {

void closeDescriptor(int& descriptor) {
    if (descriptor >= 0) {
        close(descriptor);
    }
    descriptor = -1;
}

[[noreturn]] void become(const std::string& program, const std::vector<std::string>& arguments) {
    std::vector<char*> argv;
    argv.push_back(const_cast<char*>(program.c_str()));
    for (const std::string& argument : arguments) {
        argv.push_back(const_cast<char*>(argument.c_str()));
    }
    argv.push_back(nullptr);
    execvp(program.c_str(), argv.data());
    constexpr int kCannotExecute = 127;
    _exit(kCannotExecute);
}

}  // namespace

struct ChildProcess::Process {
    pid_t pid = -1;
    int input = -1;
    int output = -1;
    std::optional<int> exitStatus;

    bool hasEnded() {
        if (pid < 0 || exitStatus) {
            return true;
        }
        int status = 0;
        if (waitpid(pid, &status, WNOHANG) == pid) {
            exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        }
        return exitStatus.has_value();
    }
};

ChildProcess::ChildProcess() : m_process(std::make_unique<Process>()) {}

ChildProcess::~ChildProcess() {
    kill();
    closeDescriptor(m_process->input);
    closeDescriptor(m_process->output);
}

bool ChildProcess::start(const std::string& program, const std::vector<std::string>& arguments,
                         Console console) {
    std::array<int, 2> input{};
    std::array<int, 2> output{};
    if (pipe2(input.data(), O_CLOEXEC) != 0 || pipe2(output.data(), O_CLOEXEC) != 0) {
        return false;
    }
    // Writing to a program that has ended must fail, not end the test.
    signal(SIGPIPE, SIG_IGN);
    const pid_t pid = fork();
    if (pid == 0) {
        dup2(input[0], STDIN_FILENO);
        dup2(output[1], STDOUT_FILENO);
        if (console == Console::Own) {
            dup2(output[1], STDERR_FILENO);
        }
        become(program, arguments);
    }
    close(input[0]);
    close(output[1]);
    m_process->pid = pid;
    m_process->input = input[1];
    m_process->output = output[0];
    return pid > 0;
}

bool ChildProcess::writeLine(const std::string& line) {
    const std::string bytes = line + '\n';
    std::size_t written = 0;
    while (written < bytes.size()) {
        const ssize_t count =
            write(m_process->input, bytes.data() + written, bytes.size() - written);
        if (count <= 0) {
            return false;
        }
        written += static_cast<std::size_t>(count);
    }
    return true;
}

bool ChildProcess::fill(int timeOut) {
    if (m_process->output < 0) {
        return false;
    }
    pollfd ready{m_process->output, POLLIN, 0};
    const int events = poll(&ready, 1, timeOut);
    if (events <= 0) {
        return events < 0 && errno == EINTR;
    }
    std::array<char, 65536> bytes{};
    const ssize_t count = read(m_process->output, bytes.data(), bytes.size());
    m_output.append(bytes.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    return count > 0;
}

void ChildProcess::closeInput() {
    closeDescriptor(m_process->input);
}

std::optional<int> ChildProcess::exitStatus() const {
    return m_process->exitStatus;
}

void ChildProcess::askToEnd() {
    if (!m_process->hasEnded()) {
        ::kill(m_process->pid, SIGTERM);
    }
}

void ChildProcess::kill() {
    if (m_process->hasEnded()) {
        return;
    }
    ::kill(m_process->pid, SIGKILL);
    int status = 0;
    waitpid(m_process->pid, &status, 0);
    m_process->exitStatus = -1;
}

bool ChildProcess::isRunning() {
    return !m_process->hasEnded();
}

int ChildProcess::id() const {
    return m_process->pid;
}

std::string siblingProgram(const std::string& name) {
    return (std::filesystem::read_symlink("/proc/self/exe").parent_path() / name).string();
}

}  // namespace testsupport
