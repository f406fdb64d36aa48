#pragma once

#include "tests/support/simulatorprocess.h"

#include <QString>

#include <string>
#include <vector>

/** Runs the monitor, saving laps, with a simulator whose first laps end within seconds. */
class ExportWatch {
public:
    /** `shell`, where there is one, is what starts the monitor in its place. */
    explicit ExportWatch(const QString& exportFolder, const std::string& shell = "")
        : m_simulator(testsupport::onShortTrack(4, {"--speed", "8"}), Console::Own),
          m_monitor(shell.empty() ? monitor() : "sh", arguments(exportFolder, shell),
                    Console::Own) {}

    [[nodiscard]] std::optional<int> waitForEnd() { return m_monitor.waitForExit(); }
    [[nodiscard]] const std::string& output() const { return m_monitor.output(); }

private:
    using Console = testsupport::ChildProcess::Console;

    static std::string monitor() { return testsupport::siblingProgram("rataip-monitor"); }

    static std::vector<std::string> arguments(const QString& exportFolder,
                                              const std::string& shell) {
        std::vector<std::string> arguments;
        if (!shell.empty()) {
            arguments = {"-c", shell, monitor()};
        }
        arguments.insert(arguments.end(), {"--wait", "20", "--laps", "4", "--export",
                                           exportFolder.toLocal8Bit().toStdString()});
        return arguments;
    }

    testsupport::SimulatorProcess m_simulator;
    testsupport::ChildProcess m_monitor;
};
