#include "tools/host/pluginfile.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

using rataip::host::findPlugin;
using rataip::host::firstExistingFile;
using rataip::host::PluginFile;
using rataip::host::standardPluginPaths;

void touch(const QString& path) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
}

TEST(StandardPluginPaths, LookBesideTheProgramAndThenInThePluginsFolder) {
    const QStringList paths = standardPluginPaths(QStringLiteral("/somewhere/bin"));
    ASSERT_EQ(paths.size(), 2);
    EXPECT_TRUE(paths.at(0).contains(QStringLiteral("/somewhere/bin/")));
    EXPECT_TRUE(paths.at(1).contains(QStringLiteral("/somewhere/plugins/")));
}

TEST(FirstExistingFile, PrefersTheEarlierPath) {
    const QTemporaryDir folder;
    const QStringList paths = {folder.filePath(QStringLiteral("a")),
                               folder.filePath(QStringLiteral("b"))};
    touch(paths.at(1));
    EXPECT_EQ(firstExistingFile(paths), paths.at(1));
    touch(paths.at(0));
    EXPECT_EQ(firstExistingFile(paths), paths.at(0));
}

TEST(FirstExistingFile, PassesOverAFolderOfThatName) {
    const QTemporaryDir folder;
    ASSERT_TRUE(QDir(folder.path()).mkdir(QStringLiteral("a")));
    EXPECT_TRUE(firstExistingFile({folder.filePath(QStringLiteral("a"))}).isNull());
}

TEST(FirstExistingFile, IsANullTextWhenThereIsNone) {
    EXPECT_TRUE(firstExistingFile({}).isNull());
    EXPECT_TRUE(firstExistingFile({QStringLiteral("/no/such/file")}).isNull());
}

TEST(FindPlugin, TakesTheOneThatIsNamedWithoutLookingForIt) {
    const PluginFile file =
        findPlugin(QStringLiteral("no/such/file"), QStringLiteral("/somewhere/bin"));
    EXPECT_EQ(file.path, QStringLiteral("no/such/file"));
    EXPECT_TRUE(file.error.isEmpty());
}

TEST(FindPlugin, TakesTheOneBesideTheProgramWhenNoneIsNamed) {
    const QTemporaryDir folder;
    const QString path = standardPluginPaths(folder.path()).constFirst();
    touch(path);
    EXPECT_EQ(findPlugin({}, folder.path()).path, path);
    EXPECT_TRUE(findPlugin({}, folder.path()).error.isEmpty());
}

TEST(FindPlugin, NamesThePlacesWhereThereIsNone) {
    const QTemporaryDir folder;
    const PluginFile file = findPlugin({}, folder.path());
    EXPECT_TRUE(file.path.isEmpty());
    for (const QString& place : standardPluginPaths(folder.path())) {
        EXPECT_TRUE(file.error.contains(place)) << file.error.toStdString();
    }
}

}  // namespace
