#include "tests/plugin/lockstepsimulator.h"

#include <gtest/gtest.h>

namespace {

constexpr int answerMilliseconds = 20000;

}  // namespace

LockstepSimulator::LockstepSimulator(std::vector<std::string> arguments) {
    arguments.insert(arguments.end(), {"--lockstep", "--log", logFile()});
    EXPECT_TRUE(m_process.start(testsupport::siblingProgram("rataip-simulator"), arguments));
}

std::optional<int> LockstepSimulator::step() {
    const std::string answer = "tick ";
    if (!m_process.writeLine("step")) {
        return std::nullopt;
    }
    // Laps of the own car are told in lines of their own.
    while (const std::optional<std::string> line = m_process.readLine(answerMilliseconds)) {
        if (line->starts_with(answer)) {
            return std::stoi(line->substr(answer.size()));
        }
    }
    return std::nullopt;
}

void LockstepSimulator::quit() {
    static_cast<void>(m_process.writeLine("quit"));
    m_process.closeInput();
    EXPECT_EQ(m_process.waitForExit(answerMilliseconds), 0);
}

std::string LockstepSimulator::logFile() const {
    return m_folder.filePath(QStringLiteral("laps.log")).toStdString();
}
