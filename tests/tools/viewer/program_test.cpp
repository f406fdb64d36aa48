#include "tests/support/printqt.h"
#include "tests/tools/programrun.h"

#include <QImage>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

enum ExitStatus {
    Ok = 0,
    BadArguments = 1,
    NoPicture = 2,
};

ProgramRun runViewer(const QStringList& arguments) {
    static const QTemporaryDir kSettings;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("XDG_CONFIG_HOME", kSettings.path().toUtf8());
    return runProgram(VIEWER_PROGRAM, arguments);
}

TEST(ViewerProgram, ShowsItsHelpAndItsVersion) {
    const ProgramRun help = runViewer({"--help"});
    EXPECT_EQ(help.status, Ok);
    EXPECT_NE(help.out.find("--picture"), std::string::npos);
    const ProgramRun version = runViewer({"--version"});
    EXPECT_EQ(version.out, "rataip-viewer " PROJECT_VERSION "\n");
}

TEST(ViewerProgram, RefusesArgumentsThatMakeNoSense) {
    const ProgramRun run = runViewer({"--duration", "soon"});
    EXPECT_EQ(run.status, BadArguments);
    EXPECT_NE(run.err.find("rataip-viewer: --duration takes seconds"), std::string::npos)
        << run.err;
}

TEST(ViewerProgram, ShowsItsWindowWithoutAPluginAndSavesAPicture) {
    const QTemporaryDir folder;
    const QString picture = folder.filePath("window.png");
    const ProgramRun run = runViewer(
        {"/no/such/plugin.so", "--duration", "0.5", "--size", "900x700", "--picture", picture});
    EXPECT_EQ(run.status, Ok) << run.err;
    EXPECT_EQ(QImage(picture).size(), QSize(900, 700));
}

TEST(ViewerProgram, SaysThatAPictureCannotBeWritten) {
    const ProgramRun run = runViewer(
        {"/no/such/plugin.so", "--duration", "0.2", "--picture", "/no/such/folder/window.png"});
    EXPECT_EQ(run.status, NoPicture);
    EXPECT_NE(run.err.find("cannot write the picture /no/such/folder/window.png"),
              std::string::npos)
        << run.err;
}

TEST(ViewerProgram, SaysThatThereIsNoLapToMakeAPictureOf) {
    const ProgramRun run =
        runViewer({"/no/such/plugin.so", "--duration", "0.2", "--lap-picture", "lap.png"});
    EXPECT_EQ(run.status, NoPicture);
    EXPECT_NE(run.err.find("no flying lap"), std::string::npos) << run.err;
}

}  // namespace
