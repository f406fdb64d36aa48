#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace testsupport {

/**
 * A program that a test talks to, line by line, over its standard input and output, with one source
 * a platform. Nothing blocks for ever: reading takes a time-out. The destructor ends a program that
 * still runs. Lines come without their line ends.
 */
class ChildProcess {
public:
    /** Where what it says goes besides its output, and how it can be reached. */
    enum class Console {
        Shared,  // the test's: errors go where the test's own go
        Own,     // one for itself: errors come among the output, and it can be asked to end
    };

    ChildProcess();
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /** Starts `program` (a path) with arguments that hold no quotation marks; false when it cannot.
     */
    [[nodiscard]] bool start(const std::string& program, const std::vector<std::string>& arguments,
                             Console console = Console::Shared);

    [[nodiscard]] bool writeLine(const std::string& line);

    /** The next line; nothing after `timeOut` milliseconds or at the end of the output. */
    [[nodiscard]] std::optional<std::string> readLine(int timeOut);

    void closeInput();

    /** The exit status once it has ended, within `timeOut` milliseconds; -1 for a violent end. */
    [[nodiscard]] std::optional<int> waitForExit(int timeOut);

    /** Asks it to end in order, as a user of the console does; it needs one of its own. */
    void askToEnd();

    /** Ends it at once, without giving it a chance to clean up, and waits for that. */
    void kill();

    [[nodiscard]] bool isRunning();

    /** The system's number of the process; -1 before start(). */
    [[nodiscard]] int id() const;

private:
    struct Process;
    std::unique_ptr<Process> m_process;
};

/** Path of a program of this name in the folder of the running one. */
[[nodiscard]] std::string siblingProgram(const std::string& name);

}  // namespace testsupport
