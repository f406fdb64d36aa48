#include "tests/tools/programrun.h"

#include <QFile>
#include <QString>

#include <gtest/gtest.h>

namespace {

QString textOf(const char* path) {
    QFile file(QString::fromUtf8(path));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly | QIODevice::Text)) << path;
    return QString::fromUtf8(file.readAll());
}

QString fixture(const char* name) {
    return QStringLiteral(FIXTURE_FOLDER "/%1" FIXTURE_SUFFIX).arg(QLatin1String(name));
}

TEST(Readme, ShowsTheExampleHostAsItIsBuilt) {
    EXPECT_TRUE(textOf(README_FILE).contains(textOf(EXAMPLE_SOURCE)));
}

TEST(ReadmeExample, EndsWhenTheSourceIsNotThere) {
    const ProgramRun run = runProgram(EXAMPLE_PROGRAM, {fixture("quiet")});
    EXPECT_EQ(run.status, 1) << run.err;
    EXPECT_EQ(run.err, "");
}

TEST(ReadmeExample, SaysOfALapWithoutATimeThatItHasNone) {
    const ProgramRun run = runProgram(EXAMPLE_PROGRAM, {fixture("threelaps")});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.err.find("Ann Timed 00:01:37.743 3"), std::string::npos) << run.err;
    EXPECT_NE(run.err.find("Bob Untimed no time 2"), std::string::npos) << run.err;
    EXPECT_NE(run.err.find(" no time 0"), std::string::npos) << run.err;
}

TEST(ReadmeExample, SaysSoWhenThereIsNoPlugin) {
    const ProgramRun run = runProgram(EXAMPLE_PROGRAM, {fixture("missing")});
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find("No live plugin:"), std::string::npos) << run.err;
}

}  // namespace
