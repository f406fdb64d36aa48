#include "tests/tools/monitor/exportwatch.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

constexpr int kNotWritten = 5;

/** How often a text occurs in another. */
int countOf(const std::string& text, const std::string& in) {
    int count = 0;
    for (std::size_t at = in.find(text); at != std::string::npos; at = in.find(text, at + 1)) {
        ++count;
    }
    return count;
}

TEST(MonitorExport, GoesOnWhenTheDiskIsFull) {
    const QTemporaryDir folder;
    // Limits the size of files, so that writing fails as on a full disk, even for root.
    ExportWatch watch(folder.path(), "trap '' XFSZ; ulimit -f 4; exec \"$0\" \"$@\"");
    EXPECT_EQ(watch.waitForEnd(), kNotWritten) << watch.output();
    EXPECT_EQ(countOf("A lap was not saved: cannot write ", watch.output()), 1) << watch.output();
    EXPECT_EQ(countOf("\n0 of ", watch.output()), 1) << watch.output();
    EXPECT_EQ(countOf(" laps saved, ", watch.output()), 1) << watch.output();
    EXPECT_GE(countOf("\nLap ", watch.output()), 4) << watch.output();
    EXPECT_TRUE(QDir(folder.path()).isEmpty()) << "no partial file is left";
}

TEST(MonitorExport, KeepsSavingWhenItsOutputFails) {
    const QTemporaryDir folder;
    ExportWatch watch(folder.path(), "exec \"$0\" \"$@\" > /dev/full");
    EXPECT_EQ(watch.waitForEnd(), kNotWritten) << watch.output();
    EXPECT_EQ(countOf("rataip-monitor: the standard output does not take all", watch.output()), 1)
        << watch.output();
    EXPECT_GE(QDir(folder.path()).entryList({QStringLiteral("*.csv")}).size(), 4);
}

}  // namespace
