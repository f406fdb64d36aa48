#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace testsupport {

/**
 * A program that a test talks to, line by line, over its standard input and output, with one source
 * file per platform. All waits take a time-out in milliseconds. The destructor kills a program that
 * still runs. Lines come without their line ends.
 */
class ChildProcess {
public:
    /** Where its errors go, and whether it can be asked to end. */
    enum class Console {
        Shared,  // the test's: errors go where the test's own errors go
        Own,     // its own: errors are part of the output, and it can be asked to end
    };

    /** Reached only when a test fails. */
    static constexpr int kPatience = 240'000;

    ChildProcess();
    /** Starts it. Reports a failure on stderr; then it is not running. */
    ChildProcess(const std::string& program, const std::vector<std::string>& arguments,
                 Console console);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /** Starts `program` (a path) with arguments without quotation marks; false on failure. */
    [[nodiscard]] bool start(const std::string& program, const std::vector<std::string>& arguments,
                             Console console = Console::Shared);

    /** False when it has ended or reads no more. */
    bool writeLine(const std::string& line);

    /** The next line; empty after the time-out or at the end of the output. */
    std::optional<std::string> readLine(int timeOut = kPatience);

    /** The next line that begins with `start`; empty if there is none. */
    std::string readLineThatBegins(const std::string& start, int timeOut = kPatience);

    /** Reads until the output contains `text` `times` times; false if it ends before that. */
    [[nodiscard]] bool waitForOutput(const std::string& text, int times = 1,
                                     int timeOut = kPatience);

    /** All output read so far. */
    [[nodiscard]] const std::string& output() const { return m_output; }

    void closeInput();

    /** Reads until it has ended. Its exit status, -1 if it was killed; empty after the time-out. */
    [[nodiscard]] std::optional<int> waitForExit(int timeOut = kPatience);

    /** Asks it to end, as Ctrl-C in a console does; it needs a console of its own. */
    void askToEnd();

    /** Kills it without giving it a chance to clean up, and waits until it has ended. */
    void kill();

    [[nodiscard]] bool isRunning();

    /** The system's number of the process; -1 before start(). */
    [[nodiscard]] int id() const;

private:
    struct Process;

    /** Appends what arrives in time to the output; false after the time-out and at the end. */
    bool fill(int timeOut);

    /** For a process that is not running. */
    [[nodiscard]] std::optional<int> exitStatus() const;

    std::unique_ptr<Process> m_process;
    std::string m_output;
    std::size_t m_unread = 0;  // where in the output the next line begins
};

/** Path of a program in the folder of the running one. */
[[nodiscard]] std::string siblingProgram(const std::string& name);

}  // namespace testsupport
