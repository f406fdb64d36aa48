#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace testsupport {

/**
 * A program that a test talks to, line by line, over its standard input and output, with one source
 * a platform. Nothing blocks for ever: whatever waits takes a time-out in milliseconds. The
 * destructor ends a program that still runs. Lines come without their line ends.
 */
class ChildProcess {
public:
    /** Where what it says goes besides its output, and how it can be reached. */
    enum class Console {
        Shared,  // the test's: errors go where the test's own go
        Own,     // one for itself: errors come among the output, and it can be asked to end
    };

    /** Waited out only when a test fails. */
    static constexpr int kPatience = 240'000;

    ChildProcess();
    /** Starts it at once; one that cannot be started is not running, and says why on stderr. */
    ChildProcess(const std::string& program, const std::vector<std::string>& arguments,
                 Console console);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /** Starts `program` (a path) with arguments that hold no quotation marks; false when it cannot.
     */
    [[nodiscard]] bool start(const std::string& program, const std::vector<std::string>& arguments,
                             Console console = Console::Shared);

    /** False when it has ended or reads no more. */
    bool writeLine(const std::string& line);

    /** The next line; nothing after the time or at the end of the output. */
    std::optional<std::string> readLine(int timeOut = kPatience);

    /** The first of the next lines that begins so; empty when none comes. */
    std::string readLineThatBegins(const std::string& start, int timeOut = kPatience);

    /** Reads until the output holds `text` so many times; false when it ended before. */
    [[nodiscard]] bool waitForOutput(const std::string& text, int times = 1,
                                     int timeOut = kPatience);

    /** All of its output that one of the waits has read. */
    [[nodiscard]] const std::string& output() const { return m_output; }

    void closeInput();

    /** Reads until it has ended. Its exit status, -1 for a violent end; nothing after the time. */
    [[nodiscard]] std::optional<int> waitForExit(int timeOut = kPatience);

    /** Asks it to end in order, as a user of the console does; it needs one of its own. */
    void askToEnd();

    /** Ends it at once, without giving it a chance to clean up, and waits for that. */
    void kill();

    [[nodiscard]] bool isRunning();

    /** The system's number of the process; -1 before start(). */
    [[nodiscard]] int id() const;

private:
    struct Process;

    /** Adds what comes within the time to the output; false at the end of either. */
    bool fill(int timeOut);

    /** Of a process that is not running. */
    [[nodiscard]] std::optional<int> exitStatus() const;

    std::unique_ptr<Process> m_process;
    std::string m_output;
    std::size_t m_unread = 0;  // where in the output the next line begins
};

/** Path of a program of this name in the folder of the running one. */
[[nodiscard]] std::string siblingProgram(const std::string& name);

}  // namespace testsupport
