#pragma once

#include "sdk/plugininterfacelive.h"

#include <QObject>

/** The smallest live plugin, written by the interface's header alone. */
class ExamplePlugin : public QObject, public TLM::SDK::PluginInterfaceLive {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID TLM_SDK_PLUGININTERFACELIVE_IID)
    Q_INTERFACES(TLM::SDK::PluginInterfaceLive)

public:
    void initialize() override;
    void saveSettings(const QString& path) override;
    void loadSettings(const QString& path) override;
    QString sourceName() const override;
    QString pluginName() const override;
    QString pluginVersion() const override;
    void checkConnectionAvailability() override;
    void connectToSource() override;
    void disconnectFromSource() override;
};
