#include "tests/tools/laps/samplelap.h"
#include "tools/laps/lapcsv.h"
#include "tools/laps/lapexporter.h"
#include "tools/laps/lapjson.h"
#include "tools/laps/newfile.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <csignal>
#include <sys/resource.h>

namespace {

using rataip::laps::csvFormat;
using rataip::laps::jsonFormat;
using rataip::laps::LapExporter;
using rataip::laps::LapFormat;
using rataip::laps::makeFolder;
using rataip::laps::tryFolder;
using rataip::laps::writeCsv;
using TLM::SDK::Lap;

/**
 * Limits the size of this process's files during its lifetime. Unlike missing permissions this also
 * stops root, and unlike a full disk it needs no disk of its own.
 */
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) {
        m_handlerBefore = std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit{bytes, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handlerBefore);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit m_before{};
    void (*m_handlerBefore)(int) = nullptr;
};

TEST(FailingFiles, AFullDeviceFailsTheTable) {
    QFile full(QStringLiteral("/dev/full"));
    ASSERT_TRUE(full.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    EXPECT_FALSE(writeCsv(*ownLap(), full));
    EXPECT_EQ(full.error(), QFileDevice::ResourceError);
}

TEST(FailingFiles, AFolderThatTheSystemForbidsIsReportedInOneSentence) {
    EXPECT_EQ(makeFolder(QStringLiteral("/proc/laps")),
              QStringLiteral("cannot make the folder /proc/laps: No such file or directory"));
    LapExporter exporter(QDir(QStringLiteral("/proc")), {csvFormat()});
    QSignalSpy failed(&exporter, &LapExporter::failed);
    exporter.add(ownLap());
    exporter.finish();
    ASSERT_EQ(failed.size(), 1);
    const QString sentence = failed.constFirst().constFirst().toString();
    EXPECT_TRUE(sentence.startsWith(QStringLiteral("cannot write /proc/car03")))
        << sentence.toStdString();
    EXPECT_FALSE(sentence.contains(QLatin1Char('\n')));
}

TEST(FailingFiles, AFolderIsTriedByWritingIntoIt) {
    EXPECT_TRUE(
        tryFolder(QStringLiteral("/proc")).startsWith(QStringLiteral("cannot write /proc")));
    const QTemporaryDir folder;
    const FileSizeLimit limit(1);
    const QString sentence = tryFolder(folder.path());
    EXPECT_TRUE(sentence.endsWith(QStringLiteral("File too large"))) << sentence.toStdString();
    EXPECT_TRUE(QDir(folder.path()).isEmpty());
}

TEST(FailingFiles, NothingIsLeftOfALapWhoseLastFileDoesNotFit) {
    const QTemporaryDir folder;
    const LapFormat small{QStringLiteral("txt"),
                          [](const Lap&, QIODevice& device) { return device.write("1") == 1; }};
    LapExporter exporter(QDir(folder.path()), {small, jsonFormat()});
    QSignalSpy failed(&exporter, &LapExporter::failed);
    const FileSizeLimit limit(1);
    exporter.add(ownLap());
    exporter.finish();
    EXPECT_EQ(failed.size(), 1);
    EXPECT_TRUE(QDir(folder.path()).isEmpty());
}

TEST(FailingFiles, AFullDiskIsReportedForEachLapAndLeavesNoPartialFile) {
    const QTemporaryDir folder;
    LapExporter exporter(QDir(folder.path()), {csvFormat(), jsonFormat()});
    QSignalSpy failed(&exporter, &LapExporter::failed);
    QSignalSpy written(&exporter, &LapExporter::written);
    {
        const FileSizeLimit limit(1000);
        for (int lap = 1; lap <= 3; ++lap) {
            exporter.add(ownLap(lap));
        }
        exporter.finish();
        ASSERT_EQ(failed.size(), 3);
        const QString sentence = failed.constFirst().constFirst().toString();
        EXPECT_TRUE(sentence.endsWith(QStringLiteral("File too large"))) << sentence.toStdString();
        EXPECT_EQ(written.size(), 0);
        EXPECT_TRUE(QDir(folder.path()).isEmpty());
    }
    exporter.add(ownLap(4));
    exporter.finish();
    EXPECT_EQ(written.size(), 1) << "the disk has room again";
    {
        const FileSizeLimit limit(1000);
        exporter.add(ownLap(5));
        exporter.finish();
    }
    EXPECT_EQ(failed.size(), 4) << "it is full again";
}

}  // namespace
