#include "sdk/utilities.h"

#include "tests/support/printqt.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <limits>

using TLM::SDK::generateUniqueFileName;
using TLM::SDK::isValidValue;

TEST(IsValidValue, IsTrueBelowTheWidenedSinglePrecisionThreshold) {
    EXPECT_TRUE(isValidValue(0.0));
    EXPECT_TRUE(isValidValue(-std::numeric_limits<double>::infinity()));
    EXPECT_TRUE(isValidValue(1e24)) << "the double is just below the widened float";
    EXPECT_FALSE(isValidValue(1.0000000138484279e+24));
    EXPECT_TRUE(isValidValue(std::nextafter(1.0000000138484279e+24, 0.0)));
    EXPECT_FALSE(isValidValue(9.999999562023526e+24));
    EXPECT_FALSE(isValidValue(std::numeric_limits<double>::infinity()));
    EXPECT_FALSE(isValidValue(std::numeric_limits<double>::quiet_NaN()));
}

// Windows drops a dot at the end of a file name: "notes." becomes "notes".
#ifdef Q_OS_WIN
constexpr bool kFilesKeepALastDot = false;
#else
constexpr bool kFilesKeepALastDot = true;
#endif

class GenerateUniqueFileName : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(m_folder.isValid()); }

    void makeFile(const QString& name) const {
        QFile file(m_folder.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    }

    // The name given for `request`, without the folder, which this checks.
    QString nameFor(const QString& request) const {
        const QDir dir(m_folder.path());
        const QString path = generateUniqueFileName(dir, request);
        const QString folder = dir.absolutePath() + '/';
        EXPECT_TRUE(path.startsWith(folder)) << path.toStdString();
        return path.mid(folder.size());
    }

    QTemporaryDir m_folder;
};

TEST_F(GenerateUniqueFileName, KeepsTheNameInAnEmptyFolder) {
    EXPECT_EQ(nameFor("lap.csv"), "lap.csv");
}

TEST_F(GenerateUniqueFileName, CountsUpUntilNothingCollides) {
    makeFile("lap.csv");
    EXPECT_EQ(nameFor("lap.csv"), "lap_1.csv");
    makeFile("lap_1.csv");
    EXPECT_EQ(nameFor("lap.csv"), "lap_2.csv");
    makeFile("lap_3.csv");
    EXPECT_EQ(nameFor("lap.csv"), "lap_2.csv");
}

TEST_F(GenerateUniqueFileName, ComparesWithCase) {
    makeFile("Lap.csv");
    EXPECT_EQ(nameFor("lap.csv"), "lap.csv");
}

TEST_F(GenerateUniqueFileName, DropsTheMiddleOfADottedName) {
    EXPECT_EQ(nameFor("archive.tar.gz"), "archive.gz");
    makeFile("lap.csv");
    EXPECT_EQ(nameFor("lap.2023.csv"), "lap_1.csv");
}

TEST_F(GenerateUniqueFileName, DropsAFolderInTheRequest) {
    EXPECT_EQ(nameFor("elsewhere/lap.csv"), "lap.csv");
}

TEST_F(GenerateUniqueFileName, WritesTheDotWithoutASuffixToo) {
    EXPECT_EQ(nameFor("notes"), "notes.");
}

TEST_F(GenerateUniqueFileName, DoesNotSeeFilesWithoutADotAndFolders) {
    makeFile("notes");
    EXPECT_EQ(nameFor("notes"), "notes.");
    ASSERT_TRUE(QDir(m_folder.path()).mkdir("lap.csv"));
    EXPECT_EQ(nameFor("lap.csv"), "lap.csv");
}

TEST_F(GenerateUniqueFileName, SeesAFileThatEndsInItsDot) {
    makeFile("notes.");
    EXPECT_EQ(nameFor("notes"), kFilesKeepALastDot ? "notes_1." : "notes.");
}

TEST_F(GenerateUniqueFileName, GivesTheNameForAFolderThatDoesNotExist) {
    const QDir missing(m_folder.filePath("missing"));
    EXPECT_EQ(generateUniqueFileName(missing, "lap.csv"), missing.absolutePath() + "/lap.csv");
}

TEST_F(GenerateUniqueFileName, GivesOnlyTheDotForAnEmptyRequest) {
    EXPECT_EQ(nameFor(""), ".");
}
