#include "tools/laps/newfile.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

using rataip::laps::makeFolder;
using rataip::laps::NewFile;
using rataip::laps::writeNewFile;

bool writeText(QIODevice& device) {
    return device.write("text") == 4;
}

QByteArray contentOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("unreadable");
}

TEST(NewFileIn, WritesAFileAndTellsItsPath) {
    const QTemporaryDir folder;
    const NewFile file = writeNewFile(QDir(folder.path()), QStringLiteral("lap.csv"), &writeText);
    EXPECT_EQ(file.path, folder.filePath(QStringLiteral("lap.csv")));
    EXPECT_TRUE(file.error.isEmpty());
    EXPECT_EQ(contentOf(file.path), "text");
}

TEST(NewFileIn, TakesAnotherNameRatherThanOverwriting) {
    const QTemporaryDir folder;
    for (const char* name : {"lap.csv", "lap_1.csv", "lap_2.csv"}) {
        const NewFile file =
            writeNewFile(QDir(folder.path()), QStringLiteral("lap.csv"), &writeText);
        EXPECT_EQ(file.path, folder.filePath(QString::fromLatin1(name)));
    }
}

TEST(NewFileIn, LeavesNothingOfAFileThatCannotBeWritten) {
    const QTemporaryDir folder;
    const NewFile file =
        writeNewFile(QDir(folder.path()), QStringLiteral("lap.csv"), [](QIODevice& device) {
            device.write("half of it");
            return false;
        });
    EXPECT_TRUE(file.path.isEmpty());
    EXPECT_TRUE(file.error.startsWith(QStringLiteral("cannot write ")));
    EXPECT_TRUE(QDir(folder.path()).isEmpty());
}

TEST(NewFileIn, NamesTheFileThatCannotBeMade) {
    const QTemporaryDir folder;
    const QString absent = folder.filePath(QStringLiteral("absent"));
    const NewFile file = writeNewFile(QDir(absent), QStringLiteral("lap.csv"), &writeText);
    EXPECT_TRUE(file.path.isEmpty());
    EXPECT_TRUE(file.error.contains(QDir::toNativeSeparators(absent + QStringLiteral("/lap.csv"))))
        << file.error.toStdString();
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
    const NewFile file = writeNewFile(QDir(folder.path()), QStringLiteral("a.txt"), &writeText);
    EXPECT_TRUE(makeFolder(file.path).endsWith(QStringLiteral("it is not a folder")));
    EXPECT_TRUE(makeFolder(file.path + QStringLiteral("/b"))
                    .startsWith(QStringLiteral("cannot make the folder ")));
}

}  // namespace
