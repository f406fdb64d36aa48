#include "tools/host/liveplugin.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

using rataip::host::findPlugin;
using rataip::host::PluginFile;
using rataip::host::standardPluginPaths;

class FindPlugin : public ::testing::Test {
protected:
    static void make(const QString& path) {
        ASSERT_TRUE(QDir().mkpath(QFileInfo(path).path()));
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    }

    QTemporaryDir folder;
    QString programFolder = folder.filePath(QStringLiteral("bin"));
    QStringList places = standardPluginPaths(programFolder);
};

TEST_F(FindPlugin, LooksBesideTheProgramAndThenInThePluginsFolder) {
    ASSERT_EQ(places.size(), 2);
    EXPECT_EQ(QFileInfo(places.at(0)).path(), programFolder);
    EXPECT_EQ(QFileInfo(places.at(1)).path(), folder.filePath(QStringLiteral("plugins")));
    make(places.at(1));
    EXPECT_EQ(findPlugin({}, programFolder).path, places.at(1));
    make(places.at(0));
    EXPECT_EQ(findPlugin({}, programFolder).path, places.at(0));
    EXPECT_TRUE(findPlugin({}, programFolder).error.isEmpty());
}

TEST_F(FindPlugin, PassesOverAFolderWithTheNameOfThePlugin) {
    ASSERT_TRUE(QDir().mkpath(places.at(0)));
    make(places.at(1));
    EXPECT_EQ(findPlugin({}, programFolder).path, places.at(1));
}

TEST_F(FindPlugin, TakesTheOneThatIsNamedWithoutLookingForIt) {
    const PluginFile file = findPlugin(QStringLiteral("no/such/file"), programFolder);
    EXPECT_EQ(file.path, QStringLiteral("no/such/file"));
    EXPECT_TRUE(file.error.isEmpty());
}

TEST_F(FindPlugin, NamesThePlacesWhereThereIsNone) {
    const PluginFile file = findPlugin({}, programFolder);
    EXPECT_TRUE(file.path.isEmpty());
    for (const QString& place : places) {
        EXPECT_TRUE(file.error.contains(place)) << file.error.toStdString();
    }
}

}  // namespace
