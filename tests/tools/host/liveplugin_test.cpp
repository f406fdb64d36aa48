#include "tools/host/liveplugin.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

using rataip::host::LivePlugin;

/** The absolute path, with a drive where the system has drives. */
QString fixture(const char* name) {
    const QFileInfo file(
        QStringLiteral(FIXTURE_FOLDER "/%1" FIXTURE_SUFFIX).arg(QLatin1String(name)));
    return file.absoluteFilePath();
}

/** The sentence that says why the file cannot be used, or a null text. */
std::string complaintAbout(const QString& path) {
    const LivePlugin::LoadResult result = LivePlugin::load(path);
    EXPECT_EQ(result.plugin == nullptr, !result.error.isEmpty());
    return result.error.toStdString();
}

/** Expects one line that names the file and the reason. */
void expectComplaint(const QString& path, const char* reason) {
    const std::string complaint = complaintAbout(path);
    EXPECT_NE(complaint.find(QDir::toNativeSeparators(path).toStdString()), std::string::npos)
        << complaint;
    EXPECT_NE(complaint.find(reason), std::string::npos) << complaint;
    EXPECT_EQ(complaint.find('\n'), std::string::npos) << complaint;
}

TEST(LivePluginLoad, GivesTheSourceOfAValidPlugin) {
    const LivePlugin::LoadResult result = LivePlugin::load(fixture("quiet"));
    ASSERT_NE(result.plugin, nullptr) << result.error.toStdString();
    EXPECT_EQ(result.plugin->source().pluginName(), QStringLiteral("Quiet Plugin"));
    EXPECT_EQ(result.plugin->filePath(), fixture("quiet"));
}

TEST(LivePluginLoad, TakesAPathRelativeToTheCurrentFolder) {
    const QString relative = QDir::current().relativeFilePath(fixture("quiet"));
    ASSERT_TRUE(QDir::isRelativePath(relative));
    EXPECT_EQ(complaintAbout(relative), "");
}

TEST(LivePluginLoad, TakesAPathWithBlanksAndLettersOfOtherScripts) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("a b \u00e9\u4e16" FIXTURE_SUFFIX));
    ASSERT_TRUE(QFile::copy(fixture("quiet"), path));
    EXPECT_EQ(complaintAbout(path), "");
}

TEST(LivePluginLoad, MakesANewObjectAfterTheFormerOneIsGone) {
    EXPECT_EQ(complaintAbout(fixture("quiet")), "");
    EXPECT_EQ(complaintAbout(fixture("quiet")), "");
}

TEST(LivePluginLoad, RefusesAMissingFile) {
    expectComplaint(fixture("missing"), "there is no such file");
}

TEST(LivePluginLoad, DoesNotGuessPrefixOrSuffix) {
    QString withoutSuffix = fixture("quiet");
    withoutSuffix.chop(static_cast<qsizetype>(sizeof FIXTURE_SUFFIX) - 1);
    expectComplaint(withoutSuffix, "there is no such file");
}

TEST(LivePluginLoad, RefusesAFolder) {
    expectComplaint(QStringLiteral(FIXTURE_FOLDER), "it is not a file");
}

TEST(LivePluginLoad, RefusesATextFile) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("text" FIXTURE_SUFFIX));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("This is no library.\n");
    file.close();
    expectComplaint(path, "it is no plugin library");
}

TEST(LivePluginLoad, RefusesAnEmptyFile) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("empty" FIXTURE_SUFFIX));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.close();
    expectComplaint(path, "it is no plugin library");
}

TEST(LivePluginLoad, RefusesALibraryThatWasCopiedInPart) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("part" FIXTURE_SUFFIX));
    ASSERT_TRUE(QFile::copy(fixture("quiet"), path));
    QFile file(path);
    ASSERT_TRUE(file.resize(4096));
    expectComplaint(path, "it is no plugin library");
}

TEST(LivePluginLoad, RefusesALibraryWithoutMetadata) {
    expectComplaint(fixture("nometadata"), "it is no plugin library");
}

TEST(LivePluginLoad, NamesBothVersionsOfTheInterface) {
    expectComplaint(
        fixture("otherversion"),
        "it was built for version 0.1 of the interface, this program takes version 0.2");
}

TEST(LivePluginLoad, RefusesAPluginOfAnotherKind) {
    expectComplaint(fixture("otherkind"), "it is a plugin of another kind");
    expectComplaint(fixture("otherkind"), "org.example.Exporter/3.1");
}

TEST(LivePluginLoad, RefusesALibraryWithoutThePluginsEntryPoint) {
    expectComplaint(fixture("noentry"), "it does not load");
}

TEST(LivePluginLoad, RefusesALibraryThatHandsOutNoObject) {
    expectComplaint(fixture("noinstance"), "it hands out no plugin object");
}

TEST(LivePluginLoad, RefusesAnObjectOfAnotherClass) {
    expectComplaint(fixture("otherclass"), "its object of class PlainObject does not implement");
}

}  // namespace
