#include "sdk/plugininterfacelive.h"
#include "tests/plugin/hostrecorder.h"
#include "tests/support/printqt.h"

#include <QCborMap>
#include <QCborValue>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonObject>
#include <QLibrary>
#include <QMetaMethod>
#include <QMetaType>
#include <QPluginLoader>
#include <QPointer>
#include <QTemporaryDir>
#include <QVariant>

#include <gtest/gtest.h>

#include <cstddef>

using namespace Qt::StringLiterals;
using TLM::SDK::CarInfo;
using TLM::SDK::CarStatus;
using TLM::SDK::LivePluginInfo;
using TLM::SDK::PluginInterfaceLive;

namespace {

const QString kExpectedIdentifier =
    QStringLiteral(EXPECTED_INTERFACE_PREFIX) + u".PluginInterfaceLive/0.2"_s;

/** The plugin as a host gets it: through the loader and the interface alone. */
class PluginModule : public ::testing::Test {
protected:
    PluginModule() : loader(QStringLiteral(PLUGIN_MODULE)) {}

    ~PluginModule() override { delete loader.instance(); }

    void SetUp() override { ASSERT_NE(plugin(), nullptr) << loader.errorString().toStdString(); }

    QObject* object() { return loader.instance(); }
    PluginInterfaceLive* plugin() { return qobject_cast<PluginInterfaceLive*>(object()); }

    QPluginLoader loader;
};

QPluginMetaData rawMetaData() {
    QLibrary library(QStringLiteral(PLUGIN_MODULE));
    using Query = QPluginMetaData (*)();
    const auto query = reinterpret_cast<Query>(library.resolve("qt_plugin_query_metadata_v2"));
    return query == nullptr ? QPluginMetaData{nullptr, 0} : query();
}

}  // namespace

TEST_F(PluginModule, NamesItsInterfaceAndItsClassBeforeItIsLoaded) {
    const QPluginLoader unloaded(QStringLiteral(PLUGIN_MODULE));
    const QJsonObject metaData = unloaded.metaData();
    EXPECT_EQ(metaData.value("IID"_L1).toString(), kExpectedIdentifier);
    EXPECT_EQ(metaData.value("className"_L1).toString(), u"iRPluginLive"_s);
    EXPECT_FALSE(metaData.contains("MetaData"_L1));
    EXPECT_FALSE(metaData.contains("URI"_L1));
}

TEST_F(PluginModule, CarriesAMetaDataRecordOfTwoEntries) {
    // The record begins with a version, Qt's version in two numbers, and the required processor.
    constexpr std::size_t kHeaderSize = 4;
    constexpr qint64 kIdentifierKey = 2;
    constexpr qint64 kClassNameKey = 3;
    const QPluginMetaData metaData = rawMetaData();
    ASSERT_GT(metaData.size, kHeaderSize);
    const auto* bytes = static_cast<const char*>(metaData.data);
    EXPECT_EQ(bytes[0], 1);
    EXPECT_EQ(bytes[1], QT_VERSION_MAJOR);

    const QByteArray record(bytes + kHeaderSize, static_cast<int>(metaData.size - kHeaderSize));
    const QCborMap map = QCborValue::fromCbor(record).toMap();
    EXPECT_EQ(map.size(), 2);
    EXPECT_EQ(map.value(kIdentifierKey).toString(), kExpectedIdentifier);
    EXPECT_EQ(map.value(kClassNameKey).toString(), u"iRPluginLive"_s);
}

TEST_F(PluginModule, GivesTheSameObjectTwice) {
    QLibrary library(QStringLiteral(PLUGIN_MODULE));
    using Instance = QObject* (*)();
    const auto instance = reinterpret_cast<Instance>(library.resolve("qt_plugin_instance"));
    ASSERT_NE(instance, nullptr);
    EXPECT_EQ(instance(), object());
    EXPECT_EQ(instance(), instance());
    EXPECT_EQ(object()->parent(), nullptr);
}

TEST_F(PluginModule, CreatesANewObjectWhenTheHostHasDeletedTheOldOne) {
    plugin()->initialize();
    const QPointer<QObject> old = object();
    delete object();
    ASSERT_TRUE(old.isNull());

    ASSERT_NE(plugin(), nullptr);
    const HostRecorder host(plugin()->dataEmitter());
    plugin()->initialize();
    EXPECT_EQ(host.heard(), QStringList{u"CarListChanged 64"_s});
}

TEST_F(PluginModule, CanBeLoadedByACopyOfItsFileInAFolderWithBlanks) {
    const QTemporaryDir folder(QDir::tempPath() + u"/a host's plugins XXXXXX"_s);
    const QString copy = folder.filePath(QFileInfo(QStringLiteral(PLUGIN_MODULE)).fileName());
    ASSERT_TRUE(QFile::copy(QStringLiteral(PLUGIN_MODULE), copy));
    QPluginLoader loaderOfCopy(copy);
    EXPECT_EQ(loaderOfCopy.metaData().value("IID"_L1).toString(), kExpectedIdentifier);
}

TEST_F(PluginModule, CastsToItsClassAndItsInterface) {
    QObject* const self = object();
    EXPECT_EQ(self->qt_metacast("iRPluginLive"), self);
    EXPECT_EQ(self->qt_metacast("TLM::SDK::PluginInterfaceLive"), plugin());
    EXPECT_EQ(self->qt_metacast(kExpectedIdentifier.toLatin1().constData()), plugin());
    EXPECT_EQ(dynamic_cast<PluginInterfaceLive*>(self), plugin());
}

TEST_F(PluginModule, LeavesOtherCastsToItsBase) {
    QObject* const self = object();
    EXPECT_EQ(self->qt_metacast("QObject"), self);
    EXPECT_EQ(self->qt_metacast("QTimer"), nullptr);
    EXPECT_EQ(self->qt_metacast("PluginInterfaceLive"), nullptr);
    EXPECT_EQ(self->qt_metacast("TLM::SDK::DataEmitter"), nullptr);
    EXPECT_EQ(self->qt_metacast("irpluginlive"), nullptr);
    EXPECT_EQ(self->qt_metacast(".PluginInterfaceLive/0.2"), nullptr);
    EXPECT_EQ(self->qt_metacast(""), nullptr);
    EXPECT_EQ(self->qt_metacast(nullptr), nullptr);
}

TEST_F(PluginModule, HasTwoSlotsAndNothingElseInItsMetaObject) {
    const QMetaObject& meta = *object()->metaObject();
    EXPECT_STREQ(meta.className(), "iRPluginLive");
    EXPECT_STREQ(meta.superClass()->className(), "QObject");
    ASSERT_EQ(meta.methodCount() - meta.methodOffset(), 2);
    const QMetaMethod tick = meta.method(meta.methodOffset());
    const QMetaMethod updateCarList = meta.method(meta.methodOffset() + 1);
    EXPECT_STREQ(tick.methodSignature().constData(), "tick()");
    EXPECT_STREQ(updateCarList.methodSignature().constData(), "updateCarList()");
    for (const QMetaMethod& method : {tick, updateCarList}) {
        EXPECT_EQ(method.methodType(), QMetaMethod::Slot);
        EXPECT_EQ(method.returnType(), QMetaType::Void);
    }
    EXPECT_EQ(meta.propertyCount(), meta.propertyOffset());
    EXPECT_EQ(meta.enumeratorCount(), meta.enumeratorOffset());
    EXPECT_EQ(meta.classInfoCount(), meta.classInfoOffset());
}

TEST_F(PluginModule, HasItsNamesAndItsVersionBeforeItIsInitialized) {
    EXPECT_EQ(plugin()->sourceName(), u"iRacing"_s);
    EXPECT_EQ(plugin()->pluginName(), u"iR Plugin"_s);
    EXPECT_EQ(plugin()->pluginVersion(), u"0.2"_s);
    EXPECT_FALSE(plugin()->isConnected());
}

TEST_F(PluginModule, PrefixesItsMessagesWithTheSource) {
    const HostRecorder host(plugin()->dataEmitter());
    plugin()->message(u"Hello"_s, 3);
    EXPECT_EQ(host.heard(), QStringList{u"Message [iRacing plugin] Hello (3)"_s});
}

TEST_F(PluginModule, AnnouncesSixtyFourCarsWhenItIsInitialized) {
    const HostRecorder host(plugin()->dataEmitter());
    plugin()->initialize();
    ASSERT_EQ(host.heard(), QStringList{u"CarListChanged 64"_s});

    const LivePluginInfo info = host.lastCarList();
    EXPECT_EQ(info.pluginName(), u"iR Plugin"_s);
    EXPECT_EQ(info.sourceName(), u"iRacing"_s);
    ASSERT_EQ(info.cars.size(), 64);
    for (int i = 0; i < info.cars.size(); ++i) {
        const CarInfo& car = info.cars[i];
        EXPECT_EQ(car.carId(), QString::number(i));
        EXPECT_TRUE(car.driverName().isEmpty()) << i;
        EXPECT_TRUE(car.source().isEmpty()) << i;
        EXPECT_EQ(car.status(), CarStatus::Undefined) << i;
    }
    EXPECT_FALSE(plugin()->isConnected());
}

TEST_F(PluginModule, AnnouncesTheSameCarsWhenItIsInitializedAgain) {
    const HostRecorder host(plugin()->dataEmitter());
    plugin()->initialize();
    plugin()->initialize();
    EXPECT_EQ(host.heard(), (QStringList{u"CarListChanged 64"_s, u"CarListChanged 64"_s}));
    EXPECT_EQ(host.lastCarList().cars.last().carId(), u"63"_s);
}

TEST_F(PluginModule, HasNoSettingsToSaveOrToLoad) {
    const QTemporaryDir folder;
    const HostRecorder host(plugin()->dataEmitter());
    for (const QString& path :
         {QString(), u"rataip"_s, u"no/such/group"_s, folder.filePath(u"settings.ini"_s)}) {
        plugin()->saveSettings(path);
        plugin()->loadSettings(path);
    }
    EXPECT_EQ(host.heard(), QStringList());
    EXPECT_TRUE(QDir(folder.path()).isEmpty());
    EXPECT_EQ(plugin()->pluginName(), u"iR Plugin"_s);
}

// A host may unload the library and load it again. The types that it registered with Qt stay
// registered, and a host's queued connections use them.
TEST(UnloadedPluginModule, LeavesItsTypesUsableAndCanBeLoadedAgain) {
    // A copy, which is not loaded elsewhere in this process.
    const QTemporaryDir folder;
    const QString copy = folder.filePath(QFileInfo(QStringLiteral(PLUGIN_MODULE)).fileName());
    ASSERT_TRUE(QFile::copy(QStringLiteral(PLUGIN_MODULE), copy));
    for (int round = 0; round < 3; ++round) {
        QPluginLoader loader(copy);
        loader.setLoadHints({});  // by default they keep the library loaded
        auto* const plugin = qobject_cast<PluginInterfaceLive*>(loader.instance());
        ASSERT_NE(plugin, nullptr) << loader.errorString().toStdString();
        {
            const HostRecorder host(plugin->dataEmitter());
            plugin->initialize();
            EXPECT_EQ(host.heard(), QStringList{u"CarListChanged 64"_s});
        }
        ASSERT_TRUE(loader.unload()) << loader.errorString().toStdString();
        for (const char* const name : {"TLM::SDK::Sample", "QList<TLM::SDK::Sample>",
                                       "TLM::SDK::LapHeader", "TLM::SDK::LivePluginInfo",
                                       "TLM::SDK::SessionInfo", "QSharedPointer<TLM::SDK::Lap>"}) {
            const QMetaType type = QMetaType::fromName(name);
            ASSERT_TRUE(type.isValid()) << name;
            EXPECT_TRUE(QVariant(type).isValid()) << name;
        }
    }
}
