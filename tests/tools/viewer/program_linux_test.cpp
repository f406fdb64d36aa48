#include "tests/support/childprocess.h"
#include "tests/tools/programrun.h"

#include <QDir>
#include <QFileInfo>
#include <QSettings>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

using testsupport::ChildProcess;

enum ExitStatus {
    Ok = 0,
    BadArguments = 1,
    NoPicture = 2,
    NoDisplay = 3,
};

ProgramRun runWithoutDisplay(const QStringList& arguments) {
    return runProgram("env", QStringList{"--unset=DISPLAY", "--unset=WAYLAND_DISPLAY",
                                         "--unset=QT_QPA_PLATFORM", VIEWER_PROGRAM} +
                                 arguments);
}

TEST(ViewerProgramWithoutDisplay, SaysSoInOneSentence) {
    const ProgramRun run = runWithoutDisplay({});
    EXPECT_EQ(run.status, NoDisplay);
    EXPECT_EQ(run.err.rfind("rataip-viewer: no window can be opened, ", 0), 0U) << run.err;
    EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
}

TEST(ViewerProgramWithoutDisplay, ShowsHelpAndErrorsAllTheSame) {
    EXPECT_EQ(runWithoutDisplay({"--help"}).status, Ok);
    EXPECT_EQ(runWithoutDisplay({"--colour"}).status, BadArguments);
}

class ViewerProgramToEnd : public ::testing::Test {
protected:
    /** Starts the program and waits until it handles requests to end. */
    void start(const std::vector<std::string>& options) {
        std::vector<std::string> arguments{"QT_QPA_PLATFORM=offscreen",
                                           "XDG_CONFIG_HOME=" + settings.path().toStdString(),
                                           VIEWER_PROGRAM, "/no/such/plugin.so"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        ASSERT_TRUE(viewer.start("env", arguments, ChildProcess::Console::Own));
        constexpr int kMostTries = 6000;
        for (int tries = 0; tries < kMostTries && !isListening(); ++tries) {
            QThread::msleep(10);
        }
        ASSERT_TRUE(isListening());
    }

    [[nodiscard]] bool isListening() const {
        const QDir files(QStringLiteral("/proc/%1/fd").arg(viewer.id()));
        const QFileInfoList all = files.entryInfoList(QDir::Files | QDir::System);
        return std::any_of(all.cbegin(), all.cend(), [](const QFileInfo& file) {
            return file.symLinkTarget().contains("signalfd");
        });
    }

    QTemporaryDir settings;
    ChildProcess viewer;
};

TEST_F(ViewerProgramToEnd, StoresItsLayoutAndSaysThatItWasAskedTo) {
    start({});
    viewer.askToEnd();
    EXPECT_EQ(viewer.waitForExit(), Ok) << viewer.output();
    EXPECT_NE(viewer.output().find("rataip-viewer: closed, as it was asked to\n"),
              std::string::npos)
        << viewer.output();
    const QSettings stored(settings.filePath("rataip/rataip-viewer.conf"), QSettings::IniFormat);
    EXPECT_TRUE(stored.contains("window/layout"));
}

TEST_F(ViewerProgramToEnd, SkipsThePicturesDueAtTheEnd) {
    start({"--duration", "3600", "--picture",
           settings.filePath(QStringLiteral("window.png")).toStdString()});
    viewer.askToEnd();
    EXPECT_EQ(viewer.waitForExit(), NoPicture) << viewer.output();
}

}  // namespace
