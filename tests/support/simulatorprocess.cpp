#include "tests/support/simulatorprocess.h"

#include <chrono>

namespace testsupport {

SimulatorProcess::SimulatorProcess(const std::vector<std::string>& arguments, Console console)
    : ChildProcess(siblingProgram("rataip-simulator"), arguments, console) {}

bool SimulatorProcess::publishes() {
    return !readLineThatBegins("Publishing ").empty();
}

std::optional<int> SimulatorProcess::step(int ticks) {
    static const std::string kAnswer = "tick ";
    writeLine("step " + std::to_string(ticks));
    // It also prints lines about laps of the own car.
    const std::string line = readLineThatBegins(kAnswer);
    return line.empty() ? std::nullopt : std::optional(std::stoi(line.substr(kAnswer.size())));
}

void SimulatorProcess::goOn() {
    static constexpr std::chrono::milliseconds kPace(8);
    m_pace = std::jthread([this](const std::stop_token& stop) {
        while (!stop.stop_requested() && step()) {
            std::this_thread::sleep_for(kPace);
        }
    });
}

void SimulatorProcess::pause() {
    // Assigning stops and joins the old thread.
    m_pace = std::jthread();
}

std::optional<int> SimulatorProcess::quit() {
    writeLine("quit");
    return waitForExit();
}

std::vector<std::string> onShortTrack(int cars, const std::vector<std::string>& more) {
    std::vector<std::string> arguments{"--track", "short", "--cars", std::to_string(cars)};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
}

std::vector<std::string> inLockStep(std::vector<std::string> arguments, const std::string& log) {
    arguments.insert(arguments.end(), {"--lockstep", "--log", log});
    return arguments;
}

}  // namespace testsupport
