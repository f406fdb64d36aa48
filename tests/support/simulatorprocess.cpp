#include "tests/support/simulatorprocess.h"

namespace testsupport {

SimulatorProcess::SimulatorProcess(const std::vector<std::string>& arguments, Console console)
    : ChildProcess(siblingProgram("rataip-simulator"), arguments, console) {}

bool SimulatorProcess::publishes() {
    return !readLineThatBegins("Publishing ").empty();
}

std::optional<int> SimulatorProcess::step(int ticks, int timeOut) {
    static const std::string kAnswer = "tick ";
    writeLine("step " + std::to_string(ticks));
    // Laps of the own car are told in lines of their own.
    const std::string line = readLineThatBegins(kAnswer, timeOut);
    return line.empty() ? std::nullopt : std::optional(std::stoi(line.substr(kAnswer.size())));
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

}  // namespace testsupport
