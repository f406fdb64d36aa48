#include "tools/monitor/console.h"
#include "tools/monitor/terminal.h"

#include <QFile>

#include <gtest/gtest.h>

#include <csignal>
#include <unistd.h>

namespace {

using rataip::monitor::Console;

TEST(StandardOutput, FailsToWriteWhenItsReaderIsGone) {
    // Parts of Qt ignore the signal as well. Without them it would end the program.
    std::signal(SIGPIPE, SIG_DFL);
    rataip::monitor::prepareStandardOutput();
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    ASSERT_EQ(close(ends[0]), 0);
    QFile file;
    ASSERT_TRUE(file.open(ends[1], QIODevice::WriteOnly, QFileDevice::AutoCloseHandle));
    QTextStream stream(&file);
    Console console(stream, false);
    console.print(QStringLiteral("a lap"));
    console.setStatus(QStringLiteral("60 ticks/s"));
    EXPECT_EQ(file.error(), QFileDevice::WriteError);
    EXPECT_FALSE(console.isComplete());
}

}  // namespace
