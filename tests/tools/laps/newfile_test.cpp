#include "tools/laps/newfile.h"

#include "tests/support/printqt.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

using rataip::laps::makeFolder;
using rataip::laps::NewFiles;
using rataip::laps::tryFolder;
using rataip::laps::writeNewFiles;

bool writeText(QIODevice& device) {
    return device.write("text") == 4;
}

bool writeHalf(QIODevice& device) {
    device.write("half of it");
    return false;
}

QByteArray contentOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("unreadable");
}

class NewFilesIn : public ::testing::Test {
protected:
    [[nodiscard]] NewFiles write() const {
        return writeNewFiles(QDir(folder.path()), QStringLiteral("lap"),
                             {{QStringLiteral("csv"), &writeText},
                              {QStringLiteral("json"), &writeText},
                              {QStringLiteral("png"), &writeText}});
    }

    /** The paths of files in the folder. */
    [[nodiscard]] QStringList paths(const QStringList& names) const {
        QStringList all;
        for (const QString& name : names) {
            all.append(folder.filePath(name));
        }
        return all;
    }

    void take(const char* name) const {
        QFile file(folder.filePath(QString::fromLatin1(name)));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write("mine"), 4);
    }

    [[nodiscard]] QStringList files() const {
        return QDir(folder.path()).entryList(QDir::Files, QDir::Name);
    }

    QTemporaryDir folder;
};

TEST_F(NewFilesIn, AreWrittenUnderOneNameAndReported) {
    const NewFiles written = write();
    EXPECT_EQ(written.paths, paths({QStringLiteral("lap.csv"), QStringLiteral("lap.json"),
                                    QStringLiteral("lap.png")}));
    EXPECT_TRUE(written.error.isEmpty());
    for (const QString& path : written.paths) {
        EXPECT_EQ(contentOf(path), "text");
    }
}

TEST_F(NewFilesIn, TakeAnotherNameRatherThanOverwriting) {
    for (const char* name : {"lap.csv", "lap_1.csv", "lap_2.csv"}) {
        EXPECT_EQ(write().paths.constFirst(), folder.filePath(QString::fromLatin1(name)));
    }
}

TEST_F(NewFilesIn, ShareTheirNumberWhicheverOfThemIsTaken) {
    take("lap.json");
    take("lap_1.png");
    EXPECT_EQ(write().paths, paths({QStringLiteral("lap_2.csv"), QStringLiteral("lap_2.json"),
                                    QStringLiteral("lap_2.png")}));
    EXPECT_EQ(contentOf(folder.filePath(QStringLiteral("lap.json"))), "mine");
    EXPECT_EQ(contentOf(folder.filePath(QStringLiteral("lap_1.png"))), "mine");
    EXPECT_EQ(files().size(), 5) << "nothing is left of the names that were tried";
}

// A list of the folder's files does not show every name that is taken, for instance a folder's or,
// on some file systems, one that differs only in case.
TEST_F(NewFilesIn, SkipNamesThatAreTakenWithoutBeingListed) {
    ASSERT_TRUE(QDir(folder.path()).mkdir(QStringLiteral("lap.csv")));
    ASSERT_TRUE(QDir(folder.path()).mkdir(QStringLiteral("lap_1.json")));
    EXPECT_EQ(write().paths, paths({QStringLiteral("lap_2.csv"), QStringLiteral("lap_2.json"),
                                    QStringLiteral("lap_2.png")}));
}

TEST_F(NewFilesIn, CountBeyondAHundredOfOneName) {
    for (int number = 0; number < 150; ++number) {
        const NewFiles written = write();
        ASSERT_TRUE(written.error.isEmpty()) << written.error.toStdString();
        // The first file alone does not show how far to count.
        EXPECT_TRUE(QFile::remove(written.paths.constFirst()));
    }
    EXPECT_EQ(write().paths.constFirst(), folder.filePath(QStringLiteral("lap_150.csv")));
}

TEST_F(NewFilesIn, LeaveNothingWhenOneCannotBeWritten) {
    const NewFiles written = writeNewFiles(QDir(folder.path()), QStringLiteral("lap"),
                                           {{QStringLiteral("csv"), &writeText},
                                            {QStringLiteral("json"), &writeHalf},
                                            {QStringLiteral("png"), &writeText}});
    EXPECT_TRUE(written.paths.isEmpty());
    EXPECT_TRUE(written.error.startsWith(QStringLiteral("cannot write ")))
        << written.error.toStdString();
    EXPECT_TRUE(written.error.contains(QStringLiteral("lap.json"))) << written.error.toStdString();
    EXPECT_TRUE(files().isEmpty()) << files().join(QLatin1Char(' ')).toStdString();
}

TEST_F(NewFilesIn, AreNamedWhenTheyCannotBeMade) {
    const QString absent = folder.filePath(QStringLiteral("absent"));
    const NewFiles written =
        writeNewFiles(QDir(absent), QStringLiteral("lap"), {{QStringLiteral("csv"), &writeText}});
    EXPECT_TRUE(written.paths.isEmpty());
    EXPECT_TRUE(
        written.error.contains(QDir::toNativeSeparators(absent + QStringLiteral("/lap.csv"))))
        << written.error.toStdString();
}

TEST(FolderFor, IsMadeWithThoseAboveIt) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("a/b/c"));
    EXPECT_TRUE(makeFolder(path).isEmpty());
    EXPECT_TRUE(QDir(path).exists());
    EXPECT_TRUE(makeFolder(path).isEmpty()) << "it is there already";
}

TEST(FolderFor, CannotBeAFile) {
    const QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("a.txt")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    EXPECT_TRUE(makeFolder(file.fileName()).endsWith(QStringLiteral("it is not a folder")));
    EXPECT_TRUE(makeFolder(file.fileName() + QStringLiteral("/b"))
                    .startsWith(QStringLiteral("cannot make the folder ")));
}

TEST(FolderFor, IsTriedAndLeftAsItWas) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("a/b"));
    EXPECT_EQ(tryFolder(path), QString());
    EXPECT_TRUE(QDir(path).exists());
    EXPECT_TRUE(QDir(path).isEmpty());
    QFile file(folder.filePath(QStringLiteral("a.txt")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    EXPECT_TRUE(tryFolder(file.fileName()).endsWith(QStringLiteral("it is not a folder")));
}

}  // namespace
