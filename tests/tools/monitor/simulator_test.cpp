#include "tests/support/simulatorprocess.h"

#include <QRegularExpression>

#include <gtest/gtest.h>

using testsupport::ChildProcess;
using testsupport::onShortTrack;
using testsupport::SimulatorProcess;

namespace {

enum ExitStatus {
    Ok = 0,
    NoData = 3,
    FellShort = 4,
};

/** A simulator whose first laps end within seconds. Publishes when constructed. */
class RunningSimulator : public SimulatorProcess {
public:
    RunningSimulator()
        : SimulatorProcess(onShortTrack(6, {"--session", "race", "--speed", "10"}), Console::Own) {
        EXPECT_TRUE(waitForOutput("Publishing ")) << output();
    }
};

class RunningMonitor : public ChildProcess {
public:
    explicit RunningMonitor(const std::vector<std::string>& arguments)
        : ChildProcess(testsupport::siblingProgram("rataip-monitor"), arguments, Console::Own) {}
};

qsizetype countOfLines(const std::string& output, const char* pattern) {
    const QRegularExpression line(QString::fromUtf8(pattern), QRegularExpression::MultilineOption);
    QRegularExpressionMatchIterator matches = line.globalMatch(QString::fromStdString(output));
    qsizetype count = 0;
    while (matches.hasNext()) {
        matches.next();
        ++count;
    }
    return count;
}

TEST(MonitorAndSimulator, ShowsCarsAndLapsAndEndsWithTheLapsAskedFor) {
    const RunningSimulator simulator;
    RunningMonitor monitor({"--wait", "20", "--laps", "18"});
    EXPECT_EQ(monitor.waitForExit(), Ok) << monitor.output();
    const std::string& output = monitor.output();
    EXPECT_NE(output.find("iR Plugin 0.2 for iRacing"), std::string::npos) << output;
    EXPECT_NE(output.find("[iRacing plugin] Connected"), std::string::npos) << output;
    EXPECT_NE(output.find("[iRacing plugin] Disconnected"), std::string::npos) << output;
    EXPECT_GE(countOfLines(output, "^\\d cars, of which new or changed: \\d$"), 1) << output;
    EXPECT_EQ(countOfLines(output, "^  \\* ?\\d  "), 1) << "the own car, listed\n" << output;
    EXPECT_GE(countOfLines(output, "^Lap  .*\\d+ samples  \\d+ channels$"), 18) << output;
    EXPECT_GE(countOfLines(output, "^Lap  \\*.* completed +\\d:\\d\\d\\.\\d\\d\\d"), 1) << output;
}

TEST(MonitorAndSimulator, EndsAfterItsTimeWithData) {
    const RunningSimulator simulator;
    RunningMonitor monitor({"--duration", "5"});
    EXPECT_EQ(monitor.waitForExit(), Ok) << monitor.output();
}

TEST(MonitorAndSimulator, SaysWhenTheTimeWasTooShortForTheLaps) {
    const RunningSimulator simulator;
    RunningMonitor monitor({"--duration", "5", "--laps", "100000"});
    EXPECT_EQ(monitor.waitForExit(), FellShort) << monitor.output();
}

TEST(MonitorAndSimulator, WritesStatusLinesWhileItRuns) {
    const RunningSimulator simulator;
    RunningMonitor monitor({});
    EXPECT_TRUE(monitor.waitForOutput(" ticks/s, ")) << monitor.output();
}

TEST(MonitorAndSimulator, WaitsForASimulatorThatIsNotThereYet) {
    RunningMonitor monitor({"--wait", "40", "--laps", "1"});
    ASSERT_TRUE(monitor.waitForOutput("Waiting for the simulator")) << monitor.output();
    const RunningSimulator simulator;
    EXPECT_EQ(monitor.waitForExit(), Ok) << monitor.output();
}

TEST(MonitorAndSimulator, GivesUpWhenNoSimulatorComesInTime) {
    RunningMonitor monitor({"--wait", "0.5"});
    EXPECT_EQ(monitor.waitForExit(), NoData) << monitor.output();
    EXPECT_LT(monitor.output().find("Waiting for the simulator"),
              monitor.output().find("No simulator delivers data"))
        << monitor.output();
}

TEST(MonitorAndSimulator, ConnectsAgainAfterTheSimulatorWasRestarted) {
    RunningMonitor monitor({});
    {
        RunningSimulator simulator;
        ASSERT_TRUE(monitor.waitForOutput("[iRacing plugin] Connected")) << monitor.output();
        simulator.askToEnd();
        EXPECT_EQ(simulator.waitForExit(), 0) << simulator.output();
    }
    ASSERT_TRUE(monitor.waitForOutput("[iRacing plugin] Sim is down")) << monitor.output();
    const RunningSimulator simulator;
    EXPECT_TRUE(monitor.waitForOutput("[iRacing plugin] Connected", 2)) << monitor.output();
    const std::string& output = monitor.output();
    EXPECT_LT(output.find("[iRacing plugin] Disconnected"),
              output.rfind("Waiting for the simulator"))
        << output;
}

TEST(MonitorAndSimulator, ConnectsAgainAfterTheSimulatorHasCrashed) {
    RunningMonitor monitor({});
    {
        RunningSimulator simulator;
        ASSERT_TRUE(monitor.waitForOutput("[iRacing plugin] Connected")) << monitor.output();
        simulator.kill();
    }
    ASSERT_TRUE(monitor.waitForOutput("[iRacing plugin] Sim is down")) << monitor.output();
    const RunningSimulator simulator;
    EXPECT_TRUE(monitor.waitForOutput("[iRacing plugin] Connected", 2)) << monitor.output();
}

TEST(MonitorAndSimulator, IsContentWhenTheSimulatorEndsAndNothingMoreWasAskedFor) {
    RunningSimulator simulator;
    RunningMonitor monitor({"--wait", "5"});
    ASSERT_TRUE(monitor.waitForOutput("[iRacing plugin] Connected")) << monitor.output();
    ASSERT_TRUE(monitor.waitForOutput(" ticks/s, ")) << monitor.output();
    simulator.askToEnd();
    EXPECT_EQ(monitor.waitForExit(), Ok) << monitor.output();
}

TEST(MonitorAndSimulator, EndsInOrderWhenItIsAskedTo) {
    const RunningSimulator simulator;
    RunningMonitor monitor({});
    ASSERT_TRUE(monitor.waitForOutput(" ticks/s, ")) << monitor.output();
    monitor.askToEnd();
    EXPECT_EQ(monitor.waitForExit(), Ok) << monitor.output();
    EXPECT_NE(monitor.output().find("[iRacing plugin] Disconnected"), std::string::npos);
}

}  // namespace
