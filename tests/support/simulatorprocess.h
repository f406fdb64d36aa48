#pragma once

#include "tests/support/childprocess.h"

#include <optional>
#include <string>
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
    std::optional<int> step(int ticks = 1, int timeOut = kPatience);

    /** Ends it in order, after which its log is whole; its exit status. */
    [[nodiscard]] std::optional<int> quit();
};

/**
 * Arguments for a race of so many cars on the short track, where first laps are over within a
 * minute, and `more` arguments.
 */
[[nodiscard]] std::vector<std::string> onShortTrack(int cars,
                                                    const std::vector<std::string>& more = {});

}  // namespace testsupport
