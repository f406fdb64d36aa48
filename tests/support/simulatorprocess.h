#pragma once

#include "tests/support/childprocess.h"

#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace testsupport {

/** The stand-in simulator, run from the folder of the running program. */
class SimulatorProcess : public ChildProcess {
public:
    explicit SimulatorProcess(const std::vector<std::string>& arguments,
                              Console console = Console::Shared);

    /** Waits until the objects are there; false when it has ended before. Not of a quiet one. */
    [[nodiscard]] bool publishes();

    /** Publishes ticks in lock step; the number of the last, or none once it has ended. */
    std::optional<int> step(int ticks = 1);

    /** Publishes some hundred ticks a second in lock step, on a thread, until pause(). */
    void goOn();
    void pause();

    /** Ends it in order, after which its log is whole; its exit status. */
    [[nodiscard]] std::optional<int> quit();

private:
    std::jthread m_pace;
};

/** Arguments for so many cars on the short track, where a lap takes some 22 s, and `more`. */
[[nodiscard]] std::vector<std::string> onShortTrack(int cars,
                                                    const std::vector<std::string>& more = {});

/** The same to be moved tick by tick, with a log of the laps that are driven. */
[[nodiscard]] std::vector<std::string> inLockStep(std::vector<std::string> arguments,
                                                  const std::string& log);

}  // namespace testsupport
