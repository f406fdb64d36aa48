#pragma once

#include "tests/support/simulatorprocess.h"

#include <atomic>
#include <chrono>
#include <string>
#include <vector>

namespace torture {

/**
 * One run of the stand-in simulator in lock step, to be moved tick by tick or by its own pace, and
 * to be ended in every bad way. It looks into the run's block by the link, which is one a process:
 * no other run may live at the same time.
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

    /** Sends a line whose answer is "ok", within `timeOut`; false when it is not. */
    [[nodiscard]] bool command(const std::string& line, std::chrono::milliseconds timeOut);

    /** Sends the simulator off as fast as it can go, for ever. */
    void rush();

    /**
     * Ends a rushing simulator at once. It is stopped again and again until a buffer is half
     * written, but for some seconds only. True when it was.
     */
    bool killInMidWrite();

private:
    std::string m_log;
    bool m_started = false;
    std::atomic<Clock::time_point> m_backSince{Clock::time_point()};
};

}  // namespace torture
