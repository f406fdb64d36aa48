#pragma once

#include "tests/support/childprocess.h"

#include <QTemporaryDir>

#include <optional>
#include <string>
#include <vector>

/**
 * The stand-in simulator in lock step, as a second process. Whatever fails is a failure of the
 * running test.
 */
class LockstepSimulator {
public:
    /** Starts it with these arguments besides those that lock step and the log need. */
    explicit LockstepSimulator(std::vector<std::string> arguments);

    /** Publishes the next tick; its number, or none once the simulator has ended. */
    std::optional<int> step();

    /** Ends it in order, after which the log is whole. */
    void quit();

    [[nodiscard]] std::string logFile() const;

private:
    testsupport::ChildProcess m_process;
    QTemporaryDir m_folder;
};
