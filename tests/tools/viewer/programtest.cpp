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
    static const QTemporaryDir settings;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("XDG_CONFIG_HOME", settings.path().toUtf8());
    return runProgram(QStringLiteral(VIEWER_PROGRAM), arguments);
}

TEST(ViewerProgram, ShowsItsHelpAndItsVersion) {
    const ProgramRun help = runViewer({QStringLiteral("--help")});
    EXPECT_EQ(help.status, Ok);
    EXPECT_NE(help.out.find("--picture"), std::string::npos);
    const ProgramRun version = runViewer({QStringLiteral("--version")});
    EXPECT_EQ(version.out, "rataip-viewer " PROJECT_VERSION "\n");
}

TEST(ViewerProgram, RefusesArgumentsThatMakeNoSense) {
    const ProgramRun run = runViewer({QStringLiteral("--duration"), QStringLiteral("soon")});
    EXPECT_EQ(run.status, BadArguments);
    EXPECT_NE(run.err.find("rataip-viewer: --duration takes seconds"), std::string::npos)
        << run.err;
}

TEST(ViewerProgram, ShowsItsWindowWithoutAPluginAndSavesAPicture) {
    const QTemporaryDir folder;
    const QString picture = folder.filePath(QStringLiteral("window.png"));
    const ProgramRun run =
        runViewer({QStringLiteral("/no/such/plugin.so"), QStringLiteral("--duration"),
                   QStringLiteral("0.5"), QStringLiteral("--size"), QStringLiteral("900x700"),
                   QStringLiteral("--picture"), picture});
    EXPECT_EQ(run.status, Ok) << run.err;
    EXPECT_EQ(QImage(picture).size(), QSize(900, 700));
}

TEST(ViewerProgram, SaysThatAPictureCannotBeWritten) {
    const ProgramRun run = runViewer(
        {QStringLiteral("/no/such/plugin.so"), QStringLiteral("--duration"), QStringLiteral("0.2"),
         QStringLiteral("--picture"), QStringLiteral("/no/such/folder/window.png")});
    EXPECT_EQ(run.status, NoPicture);
    EXPECT_NE(run.err.find("cannot write the picture /no/such/folder/window.png"),
              std::string::npos)
        << run.err;
}

TEST(ViewerProgram, SaysThatThereIsNoLapToMakeAPictureOf) {
    const ProgramRun run = runViewer({QStringLiteral("/no/such/plugin.so"),
                                      QStringLiteral("--duration"), QStringLiteral("0.2"),
                                      QStringLiteral("--lap-picture"), QStringLiteral("lap.png")});
    EXPECT_EQ(run.status, NoPicture);
    EXPECT_NE(run.err.find("no flying lap"), std::string::npos) << run.err;
}

}  // namespace
