#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

/**
 * The simulator program as a child process. A child that is still there when this goes away is
 * killed. All waits end after a generous time, so that a fault fails a test instead of hanging it.
 */
class SimulatorProcess {
public:
    explicit SimulatorProcess(const std::vector<std::string>& arguments);
    ~SimulatorProcess();
    SimulatorProcess(const SimulatorProcess&) = delete;
    SimulatorProcess& operator=(const SimulatorProcess&) = delete;

    /** Writes `line` and its end to the program's standard input. */
    void tell(const std::string& line);

    /** Closes the program's standard input. */
    void closeInput();

    /** The next line of the program's standard output; empty when none comes. */
    std::string readLine();

    /** Reads lines until one begins with `start`; that line, or empty when none comes. */
    std::string readUntil(const std::string& start);

    void sendSignal(int number) const;

    /** Waits for the end; the exit status, or minus the number of the signal that ended it. */
    int wait();

    /** All of standard error, and what was not yet read of standard output, after wait(). */
    const std::string& errors() const { return m_errors; }
    const std::string& output() const { return m_pending; }

private:
    bool fill(int descriptor, std::string& text, int atMostMilliseconds);

    pid_t m_process = -1;
    int m_input = -1;
    int m_outputEnd = -1;
    int m_errorEnd = -1;
    std::string m_pending;
    std::string m_errors;
};
