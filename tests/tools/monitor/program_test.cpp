#include "tests/tools/programrun.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>

namespace {

enum ExitStatus {
    Ok = 0,
    BadArguments = 1,
    PluginUnusable = 2,
    NoData = 3,
    NotWritten = 5,
};

QString fixture(const char* name) {
    return QStringLiteral(FIXTURE_FOLDER "/%1" FIXTURE_SUFFIX).arg(QLatin1String(name));
}

ProgramRun runMonitor(const QStringList& arguments, const QString& folder = QString()) {
    return runProgram(MONITOR_PROGRAM, arguments, folder);
}

/** Expects an exit status and one line on standard error that contains `part`. */
void expectRefusal(const ProgramRun& run, int status, const std::string& part) {
    EXPECT_EQ(run.status, status) << run.err;
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
    EXPECT_EQ(run.err.rfind("rataip-monitor: ", 0), 0U) << run.err;
    EXPECT_NE(run.err.find(part), std::string::npos) << run.err;
}

TEST(MonitorProgram, ShowsItsHelp) {
    const ProgramRun run = runMonitor({"--help"});
    EXPECT_EQ(run.status, Ok);
    EXPECT_NE(run.out.find("Exit status:"), std::string::npos) << run.out;
    EXPECT_EQ(run.err, "");
}

TEST(MonitorProgram, ShowsItsVersion) {
    const ProgramRun run = runMonitor({"--version"});
    EXPECT_EQ(run.status, Ok);
    EXPECT_EQ(run.out, "rataip-monitor " PROJECT_VERSION "\n");
}

TEST(MonitorProgram, RefusesArgumentsThatMakeNoSense) {
    expectRefusal(runMonitor({"--laps", "none"}), BadArguments,
                  "--laps takes a whole number from 1 on, not \"none\" (see --help)");
    expectRefusal(runMonitor({"--colour"}), BadArguments, "colour");
}

TEST(MonitorProgram, RefusesEveryKindOfBadPlugin) {
    for (const char* name : {"missing", "nometadata", "otherversion", "otherkind", "noentry",
                             "noinstance", "otherclass"}) {
        const QString path = fixture(name);
        expectRefusal(runMonitor({path}), PluginUnusable,
                      QDir::toNativeSeparators(path).toStdString());
    }
}

TEST(MonitorProgram, NamesBothVersionsOfAnInterfaceThatDoesNotFit) {
    expectRefusal(runMonitor({fixture("otherversion")}), PluginUnusable, "version 0.1");
    expectRefusal(runMonitor({fixture("otherversion")}), PluginUnusable, "version 0.2");
}

TEST(MonitorProgram, SaysWhereItLookedForThePlugin) {
    const QTemporaryDir folder;
    const QString program = folder.filePath(QFileInfo(QStringLiteral(MONITOR_PROGRAM)).fileName());
    ASSERT_TRUE(QFile::copy(MONITOR_PROGRAM, program));
    expectRefusal(runProgram(program, {}), PluginUnusable, "found no plugin at");
}

TEST(MonitorProgram, EndsWithoutDataWhenNoSourceComes) {
    const ProgramRun run = runMonitor({fixture("quiet"), "--wait", "0"});
    EXPECT_EQ(run.status, NoData) << run.err;
    EXPECT_NE(run.out.find("Quiet Plugin 1.5 for Nothing"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("\nNo simulator delivers data; "), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("0 laps, 0 ticks received"), std::string::npos) << run.out;
}

TEST(MonitorProgram, TriesTheFolderForLapsBeforeItWaits) {
    const QTemporaryDir folder;
    QFile file(folder.filePath("taken"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    // If it did not end here, it would wait forever.
    const ProgramRun run = runMonitor({fixture("quiet"), "--export", file.fileName()});
    EXPECT_EQ(run.status, NotWritten);
    EXPECT_EQ(run.out, "");
    EXPECT_NE(run.err.find("rataip-monitor: cannot write into "), std::string::npos) << run.err;
    EXPECT_NE(run.err.find("it is not a folder; name another folder with --export\n"),
              std::string::npos)
        << run.err;
}

TEST(MonitorProgram, EndsAfterItsTimeWhileItWaits) {
    const ProgramRun run = runMonitor({fixture("quiet"), "--duration", "0.3"});
    EXPECT_EQ(run.status, NoData) << run.err;
    EXPECT_NE(run.out.find("Waiting for the simulator"), std::string::npos) << run.out;
}

TEST(MonitorProgram, TakesAPathRelativeToItsFolder) {
    const QFileInfo plugin(fixture("quiet"));
    const ProgramRun run = runMonitor({plugin.fileName(), "--wait", "0"}, plugin.absolutePath());
    EXPECT_EQ(run.status, NoData) << run.err;
}

}  // namespace
