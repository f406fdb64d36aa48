#pragma once

#include "tests/support/childprocess.h"

#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace testsupport {

/** The stand-in simulator in the folder of the running program. */
class SimulatorProcess : public ChildProcess {
public:
    explicit SimulatorProcess(const std::vector<std::string>& arguments,
                              Console console = Console::Shared);

    /** Waits until it has published its objects; false if it has ended. Not with --quiet. */
    [[nodiscard]] bool publishes();

    /** Publishes ticks in lock step; the number of the last one, empty once it has ended. */
    std::optional<int> step(int ticks = 1);

    /** Publishes about a hundred ticks per second in lock step, on a thread, until pause(). */
    void goOn();
    void pause();

    /** Lets it end, after which its log is complete; its exit status. */
    [[nodiscard]] std::optional<int> quit();

private:
    std::jthread m_pace;
};

/** Arguments for `cars` on the short track, where a lap takes about 22 s, and `more`. */
[[nodiscard]] std::vector<std::string> onShortTrack(int cars,
                                                    const std::vector<std::string>& more = {});

/** `arguments` for a run in lock step with a log of the driven laps. */
[[nodiscard]] std::vector<std::string> inLockStep(std::vector<std::string> arguments,
                                                  const std::string& log);

}  // namespace testsupport
