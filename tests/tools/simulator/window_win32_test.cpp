#include "tests/support/simulatorprocess.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>
#include <windows.h>

using testsupport::SimulatorProcess;

class SimulatorWindow : public ::testing::TestWithParam<std::vector<std::string>> {};

// "taskkill" and the task manager ask a program to end like this.
TEST_P(SimulatorWindow, EndsTheProgramInOrderWhenItIsAskedToClose) {
    SimulatorProcess program(GetParam());
    // Its window was made before.
    ASSERT_TRUE(program.publishes());
    const HWND window = FindWindowW(L"rataip-simulator", nullptr);
    ASSERT_NE(window, nullptr);

    ASSERT_TRUE(PostMessageW(window, WM_CLOSE, 0, 0));

    ASSERT_EQ(program.waitForExit(), 0);
    EXPECT_NE(program.readLineThatBegins("Ended after "), "");
    EXPECT_FALSE(program.readLine().has_value()) << "the last line";
}

INSTANTIATE_TEST_SUITE_P(
    Runs, SimulatorWindow,
    ::testing::Values(std::vector<std::string>{}, std::vector<std::string>{"--lockstep"},
                      std::vector<std::string>{"--speed", "0.001"}),
    [](const auto& run) {
        return std::string(run.index == 0 ? "ByTheClock" : run.index == 1 ? "InLockStep" : "Slow");
    });
