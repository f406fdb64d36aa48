#include "tests/support/childprocess.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>
#include <windows.h>

using testsupport::ChildProcess;

namespace {

constexpr int kAnswerTime = 60'000;  // milliseconds; only a hang takes as long

/** Waits until the program publishes, which it does after its window was made. */
bool startsAndPublishes(ChildProcess& program, const std::vector<std::string>& arguments) {
    if (!program.start(testsupport::siblingProgram("rataip-simulator"), arguments)) {
        return false;
    }
    return program.readLine(kAnswerTime).value_or("").rfind("Publishing ", 0) == 0;
}

/** The program's last line. */
std::string rest(ChildProcess& program) {
    std::string last;
    while (const std::optional<std::string> line = program.readLine(kAnswerTime)) {
        last = *line;
    }
    return last;
}

}  // namespace

class SimulatorWindow : public ::testing::TestWithParam<std::vector<std::string>> {};

// As "taskkill" and the task list ask a program to end.
TEST_P(SimulatorWindow, EndsTheProgramInOrderWhenItIsAskedToClose) {
    ChildProcess program;
    ASSERT_TRUE(startsAndPublishes(program, GetParam()));
    const HWND window = FindWindowW(L"rataip-simulator", nullptr);
    ASSERT_NE(window, nullptr);

    ASSERT_TRUE(PostMessageW(window, WM_CLOSE, 0, 0));

    ASSERT_EQ(program.waitForExit(kAnswerTime), 0);
    EXPECT_EQ(rest(program).rfind("Ended after ", 0), 0U);
}

INSTANTIATE_TEST_SUITE_P(
    Runs, SimulatorWindow,
    ::testing::Values(std::vector<std::string>{}, std::vector<std::string>{"--lockstep"},
                      std::vector<std::string>{"--speed", "0.001"}),
    [](const auto& run) {
        return std::string(run.index == 0 ? "ByTheClock" : run.index == 1 ? "InLockStep" : "Slow");
    });
