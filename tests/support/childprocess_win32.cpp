#include "tests/support/childprocess.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <windows.h>

namespace testsupport {

namespace {

constexpr DWORD kPollInterval = 1;    // milliseconds
constexpr UINT kKilled = 0xFFFFFFFF;  // exit status of a killed program, -1 as an int

void closeHandle(HANDLE& handle) {
    if (handle != nullptr) {
        CloseHandle(handle);
    }
    handle = nullptr;
}

/** A pipe of which the child inherits one end. */
bool makePipe(HANDLE& readEnd, HANDLE& writeEnd, HANDLE& ours) {
    SECURITY_ATTRIBUTES inheritable{};
    inheritable.nLength = sizeof inheritable;
    inheritable.bInheritHandle = TRUE;
    return CreatePipe(&readEnd, &writeEnd, &inheritable, 0) != 0 &&
           SetHandleInformation(ours, HANDLE_FLAG_INHERIT, 0) != 0;
}

std::wstring commandLine(const std::string& program, const std::vector<std::string>& arguments) {
    std::wstring line = L'"' + std::filesystem::path(program).wstring() + L'"';
    for (const std::string& argument : arguments) {
        line += L" \"" + std::filesystem::path(argument).wstring() + L'"';
    }
    return line;
}

/** Retries after one error with which Wine sometimes fails to start a program. */
bool createProcess(std::wstring line, DWORD flags, STARTUPINFOW& startup,
                   PROCESS_INFORMATION& child) {
    constexpr int kAttempts = 5;
    constexpr DWORD kPause = 200;  // milliseconds
    for (int attempt = 1; attempt <= kAttempts; ++attempt) {
        if (CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, flags, nullptr, nullptr,
                           &startup, &child) != 0) {
            return true;
        }
        if (GetLastError() != ERROR_INTERNAL_ERROR) {
            return false;
        }
        Sleep(kPause);
    }
    SetLastError(ERROR_INTERNAL_ERROR);
    return false;
}

}  // namespace

struct ChildProcess::Process {
    HANDLE process = nullptr;
    HANDLE input = nullptr;
    HANDLE output = nullptr;

    ~Process() {
        closeHandle(process);
        closeHandle(input);
        closeHandle(output);
    }

    [[nodiscard]] bool hasEnded() const {
        return process == nullptr || WaitForSingleObject(process, 0) == WAIT_OBJECT_0;
    }
};

ChildProcess::ChildProcess() : m_process(std::make_unique<Process>()) {}
ChildProcess::~ChildProcess() {
    kill();
}

bool ChildProcess::start(const std::string& program, const std::vector<std::string>& arguments,
                         Console console) {
    HANDLE childInput = nullptr;
    HANDLE childOutput = nullptr;
    if (!makePipe(childInput, m_process->input, m_process->input) ||
        !makePipe(m_process->output, childOutput, m_process->output)) {
        return false;
    }
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = childInput;
    startup.hStdOutput = childOutput;
    startup.hStdError = console == Console::Own ? childOutput : GetStdHandle(STD_ERROR_HANDLE);
    PROCESS_INFORMATION child{};
    const DWORD flags = console == Console::Own ? CREATE_NO_WINDOW : 0;
    const bool started = createProcess(commandLine(program, arguments), flags, startup, child);
    const DWORD error = GetLastError();
    closeHandle(childInput);
    closeHandle(childOutput);
    if (!started) {
        std::fprintf(stderr, "ChildProcess: %s, error %lu\n", program.c_str(), error);
        return false;
    }
    CloseHandle(child.hThread);
    m_process->process = child.hProcess;
    return true;
}

bool ChildProcess::writeLine(const std::string& line) {
    const std::string bytes = line + '\n';
    DWORD written = 0;
    return WriteFile(m_process->input, bytes.data(), static_cast<DWORD>(bytes.size()), &written,
                     nullptr) != 0 &&
           written == bytes.size();
}

bool ChildProcess::fill(int timeOut) {
    const ULONGLONG end = GetTickCount64() + static_cast<ULONGLONG>(timeOut);
    DWORD available = 0;
    while (PeekNamedPipe(m_process->output, nullptr, 0, nullptr, &available, nullptr) != 0 &&
           available == 0) {
        if (GetTickCount64() >= end) {
            return false;
        }
        Sleep(kPollInterval);
    }
    std::array<char, 65536> bytes{};
    DWORD count = 0;
    if (available == 0 || ReadFile(m_process->output, bytes.data(),
                                   static_cast<DWORD>(bytes.size()), &count, nullptr) == 0) {
        return false;
    }
    // Line ends are "\n", as on other platforms.
    std::remove_copy(bytes.data(), bytes.data() + count, std::back_inserter(m_output), '\r');
    return count > 0;
}

void ChildProcess::closeInput() {
    closeHandle(m_process->input);
}

std::optional<int> ChildProcess::exitStatus() const {
    DWORD status = 0;
    if (m_process->process == nullptr || GetExitCodeProcess(m_process->process, &status) == 0) {
        return std::nullopt;
    }
    return static_cast<int>(status);
}

// Ctrl-C goes to all processes of a console, so a helper program without a console of its own
// attaches to it and sends it.
void ChildProcess::askToEnd() {
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION sender{};
    const std::string program = siblingProgram("rataip-test-ctrl-c");
    if (!createProcess(commandLine(program, {std::to_string(id())}), DETACHED_PROCESS, startup,
                       sender)) {
        std::fprintf(stderr, "ChildProcess: %s, error %lu\n", program.c_str(), GetLastError());
        return;
    }
    WaitForSingleObject(sender.hProcess, kPatience);
    CloseHandle(sender.hThread);
    CloseHandle(sender.hProcess);
}

void ChildProcess::kill() {
    if (!m_process->hasEnded()) {
        TerminateProcess(m_process->process, kKilled);
        WaitForSingleObject(m_process->process, INFINITE);
    }
}

bool ChildProcess::isRunning() {
    return !m_process->hasEnded();
}

int ChildProcess::id() const {
    return m_process->process == nullptr ? -1 : static_cast<int>(GetProcessId(m_process->process));
}

std::string siblingProgram(const std::string& name) {
    std::wstring path(MAX_PATH, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return (std::filesystem::path(path).parent_path() / (name + ".exe")).string();
}

}  // namespace testsupport
