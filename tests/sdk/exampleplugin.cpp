#include "tests/sdk/exampleplugin.h"

void ExamplePlugin::initialize() {
    connected = false;
    pluginInfo.setPluginName(pluginName());
    pluginInfo.setSourceName(sourceName());
    TLM::SDK::CarInfo car;
    car.setCarId("0");
    pluginInfo.cars = {car};
    emit emitter.sendCarListChanged(pluginInfo);
}

void ExamplePlugin::saveSettings(const QString& path) {
    message("saved to " + path, 2);
}

void ExamplePlugin::loadSettings(const QString& path) {
    message("loaded from " + path, 2);
}

QString ExamplePlugin::sourceName() const {
    return QStringLiteral("Example");
}

QString ExamplePlugin::pluginName() const {
    return QStringLiteral("Example plugin");
}

QString ExamplePlugin::pluginVersion() const {
    return QStringLiteral("1.0");
}

void ExamplePlugin::checkConnectionAvailability() {
    emit emitter.sendConnectivityAvailable(true);
}

void ExamplePlugin::connectToSource() {
    connected = true;
    emit emitter.sendConnected();
    TLM::SDK::Sample sample;
    sample.setCarId("0");
    sample.setValue("speed", 12.5, "m/s");
    emit emitter.sendSamples({sample});
    auto lap = QSharedPointer<TLM::SDK::Lap>::create();
    lap->addSample(sample);
    emit emitter.sendTelemetryLap(lap);
}

void ExamplePlugin::disconnectFromSource() {
    connected = false;
    emit emitter.sendDisconnected();
}
