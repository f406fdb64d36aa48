#pragma once

#include "tests/support/simulatorprocess.h"

#include <atomic>
#include <chrono>
#include <string>
#include <vector>

namespace torture {

/**
 * One run of the stand-in simulator in lock step, moved tick by tick or at its own pace, and ended
 * in every bad way. It looks at the run's block through the link, of which a process has one: there
 * can be only one run at a time.
 */
class SimulatorRun : public testsupport::SimulatorProcess {
public:
    using Clock = std::chrono::steady_clock;

    SimulatorRun(const std::vector<std::string>& arguments, const std::string& log);
    ~SimulatorRun();
    SimulatorRun(const SimulatorRun&) = delete;
    SimulatorRun& operator=(const SimulatorRun&) = delete;

    [[nodiscard]] bool isStarted() const { return m_started; }
    [[nodiscard]] const std::string& log() const { return m_log; }

    /** When the first tick of this run was published, or the first after a stall. */
    [[nodiscard]] Clock::time_point backSince() const { return m_backSince; }

    /** Sends a line; false unless the answer within `timeOut` is "ok". */
    [[nodiscard]] bool command(const std::string& line, std::chrono::milliseconds timeOut);

    /** Lets the simulator run at full speed until it is killed. */
    void rush();

    /**
     * Kills a rushing simulator. Stops it repeatedly, for a few seconds at most, until a buffer is
     * half written; true if one was.
     */
    bool killInMidWrite();

private:
    std::string m_log;
    bool m_started = false;
    std::atomic<Clock::time_point> m_backSince{Clock::time_point()};
};

}  // namespace torture
