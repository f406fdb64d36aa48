#include "tests/tools/programrun.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>

namespace {

constexpr int kNotWritten = 5;

TEST(MonitorProgram, SaysInOneSentenceThatItCannotDrawLaps) {
    const QTemporaryDir folder;
    const ProgramRun run = runProgram("env", {"--unset=DISPLAY", "QT_QPA_PLATFORM=xcb",
                                              MONITOR_PROGRAM, "--export", folder.path()});
    EXPECT_EQ(run.status, kNotWritten);
    EXPECT_EQ(run.err.rfind("rataip-monitor: laps cannot be drawn here, ", 0), 0U) << run.err;
    EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
}

TEST(MonitorProgram, SaysThatItsHelpCannotBeWritten) {
    const ProgramRun run =
        runProgram("sh", {"-c", QStringLiteral("exec \"$0\" --help > /dev/full"), MONITOR_PROGRAM});
    EXPECT_EQ(run.status, kNotWritten);
    EXPECT_NE(run.err.find("rataip-monitor: the standard output does not take all"),
              std::string::npos)
        << run.err;
}

}  // namespace
