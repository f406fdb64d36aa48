#include "sdk/plugininterfacelive.h"

#include "tests/support/printqt.h"

#include <QJsonObject>
#include <QPluginLoader>
#include <QSignalSpy>

#include <gtest/gtest.h>

#include <type_traits>

using TLM::SDK::DataEmitter;
using TLM::SDK::LivePluginInfo;
using TLM::SDK::PluginInterfaceLive;

static_assert(std::is_abstract_v<PluginInterfaceLive>);
static_assert(std::has_virtual_destructor_v<PluginInterfaceLive>);
static_assert(!std::is_copy_constructible_v<PluginInterfaceLive>);

namespace {

class NamedPlugin : public PluginInterfaceLive {
public:
    explicit NamedPlugin(const QString& sourceName) : m_sourceName(sourceName) {}

    void initialize() override {}
    void saveSettings(const QString&) override {}
    void loadSettings(const QString&) override {}
    QString sourceName() const override { return m_sourceName; }
    QString pluginName() const override { return {}; }
    QString pluginVersion() const override { return {}; }
    void checkConnectionAvailability() override {}
    void connectToSource() override { connected = true; }
    void disconnectFromSource() override { connected = false; }

    const LivePluginInfo& info() const { return pluginInfo; }
    const DataEmitter* ownEmitter() const { return &emitter; }
    void rename(const QString& sourceName) { m_sourceName = sourceName; }

private:
    QString m_sourceName;
};

QString messageOf(NamedPlugin& plugin, const QString& text) {
    QSignalSpy messages(plugin.dataEmitter(), &DataEmitter::sendMessage);
    plugin.message(text, 0);
    return messages.size() == 1 ? messages[0][0].toString()
                                : QStringLiteral("not exactly one message");
}

}  // namespace

TEST(PluginInterfaceLive, StartsDisconnectedWithoutCars) {
    NamedPlugin plugin("Sim");
    EXPECT_FALSE(plugin.isConnected());
    EXPECT_TRUE(plugin.info().cars.isEmpty());
    EXPECT_TRUE(plugin.info().pluginName().isEmpty());
    EXPECT_EQ(plugin.dataEmitter(), plugin.ownEmitter());
    EXPECT_EQ(plugin.dataEmitter()->parent(), nullptr);
}

TEST(PluginInterfaceLive, ReportsTheConnectionStateThatThePluginSets) {
    NamedPlugin plugin("Sim");
    plugin.connectToSource();
    EXPECT_TRUE(plugin.isConnected());
    plugin.disconnectFromSource();
    EXPECT_FALSE(plugin.isConnected());
}

TEST(PluginInterfaceLive, PrefixesMessagesWithTheSource) {
    NamedPlugin plugin("iRacing");
    EXPECT_EQ(messageOf(plugin, "Connected"), "[iRacing plugin] Connected");
    plugin.rename("Other");
    EXPECT_EQ(messageOf(plugin, "Connected"), "[Other plugin] Connected");
}

TEST(PluginInterfaceLive, SendsThePrefixAloneForAnEmptyText) {
    NamedPlugin plugin("iRacing");
    EXPECT_EQ(messageOf(plugin, QString()), "[iRacing plugin] ");
}

TEST(PluginInterfaceLive, KeepsTheBlankOfThePrefixForAnEmptySource) {
    NamedPlugin plugin{QString()};
    EXPECT_EQ(messageOf(plugin, "text"), "[ plugin] text");
}

TEST(PluginInterfaceLive, PassesTheLevelOfDetailOn) {
    NamedPlugin plugin("Sim");
    QSignalSpy messages(plugin.dataEmitter(), &DataEmitter::sendMessage);
    plugin.message("a", 0);
    plugin.message("b", 7);
    ASSERT_EQ(messages.size(), 2);
    EXPECT_EQ(messages[0][1].toInt(), 0);
    EXPECT_EQ(messages[1][1].toInt(), 7);
}

TEST(PluginInterfaceLive, IsIdentifiedByThePrefixAndTheVersion) {
    EXPECT_STREQ(qobject_interface_iid<PluginInterfaceLive*>(),
                 EXPECTED_INTERFACE_PREFIX ".PluginInterfaceLive/0.2");
}

TEST(PluginInterfaceLive, ReachesAPluginThroughQtsLoader) {
    QPluginLoader loader(QStringLiteral(EXAMPLE_PLUGIN));
    EXPECT_EQ(loader.metaData().value("IID").toString(),
              EXPECTED_INTERFACE_PREFIX ".PluginInterfaceLive/0.2");
    QObject* const instance = loader.instance();
    ASSERT_NE(instance, nullptr) << loader.errorString().toStdString();
    auto* const plugin = qobject_cast<PluginInterfaceLive*>(instance);
    ASSERT_NE(plugin, nullptr);

    QSignalSpy carLists(plugin->dataEmitter(), &DataEmitter::sendCarListChanged);
    QSignalSpy samples(plugin->dataEmitter(), &DataEmitter::sendSamples);
    QSignalSpy laps(plugin->dataEmitter(), &DataEmitter::sendTelemetryLap);
    QSignalSpy messages(plugin->dataEmitter(), &DataEmitter::sendMessage);
    plugin->initialize();
    plugin->connectToSource();
    plugin->saveSettings("group");
    EXPECT_TRUE(plugin->isConnected());
    ASSERT_EQ(carLists.size(), 1);
    EXPECT_EQ(carLists[0][0].value<LivePluginInfo>().sourceName(), "Example");
    ASSERT_EQ(samples.size(), 1);
    const auto sent = samples[0][0].value<QList<TLM::SDK::Sample>>();
    ASSERT_EQ(sent.size(), 1);
    EXPECT_EQ(sent[0].value("speed").print(), "12.5 m/s");
    ASSERT_EQ(laps.size(), 1);
    EXPECT_EQ(laps[0][0].value<QSharedPointer<TLM::SDK::Lap>>()->size(), 1);
    ASSERT_EQ(messages.size(), 1);
    EXPECT_EQ(messages[0][0].toString(), "[Example plugin] saved to group");
    plugin->disconnectFromSource();
    EXPECT_FALSE(plugin->isConnected());
}
