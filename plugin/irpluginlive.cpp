#include "plugin/irpluginlive.h"

#include "plugin/connectionguard.h"

#include <chrono>

using namespace Qt::StringLiterals;

namespace {

constexpr int tickWaitMilliseconds = 20;
constexpr int connectWaitMilliseconds = 200;
constexpr std::chrono::milliseconds tickInterval(10);
constexpr int noSessionInfoSeen = -1;

}  // namespace

iRPluginLive::iRPluginLive() = default;

iRPluginLive::~iRPluginLive() {
    closeSilently();
}

void iRPluginLive::initialize() {
    const ConnectionGuard guard(this, connectionNumber);
    if (connected) {
        disconnectFromSource();
    }
    if (guard.isDeleted()) {
        return;
    }
    // A slot of the host may have connected again at once.
    if (connected) {
        closeConnection();
    }
    tickWaitMs = tickWaitMilliseconds;
    connectWaitMs = connectWaitMilliseconds;
    dataBuffer.clear();
    reader.initialize();
    lastSessionInfoUpdate = noSessionInfoSeen;
    createTimer();
    pluginInfo.setPluginName(pluginName());
    pluginInfo.setSourceName(sourceName());
    pluginInfo.cars.resize(iRTelemetryReader::simulatorCars);
    for (int i = 0; i < iRTelemetryReader::simulatorCars; ++i) {
        pluginInfo.cars[i].setCarId(QString::number(i));
    }
    announceCarList();
}

void iRPluginLive::createTimer() {
    // Kept by a second initialize(), which a slot of the timer's own tick may have called.
    if (timer != nullptr) {
        return;
    }
    timer = new QTimer(this);
    timer->setInterval(tickInterval);
    connect(timer, &QTimer::timeout, this, &iRPluginLive::tick);
}

void iRPluginLive::closeSilently() {
    if (connected) {
        endConnection();
        irsdk_shutdown();
    }
}

void iRPluginLive::announceCarList() {
    // A slot may change or delete this object while others still read what they were given.
    const TLM::SDK::LivePluginInfo announced = pluginInfo;
    emit emitter.sendCarListChanged(announced);
}

bool iRPluginLive::isInitialized() const {
    return timer != nullptr;
}

void iRPluginLive::saveSettings(const QString& /*path*/) {}

void iRPluginLive::loadSettings(const QString& /*path*/) {}

QString iRPluginLive::sourceName() const {
    return u"iRacing"_s;
}

QString iRPluginLive::pluginName() const {
    return u"iR Plugin"_s;
}

QString iRPluginLive::pluginVersion() const {
    return QStringLiteral(RATAIP_PLUGIN_VERSION);
}

void iRPluginLive::updateCarList() {
    if (!reader.updateCarList()) {
        return;
    }
    for (int i = 0; i < pluginInfo.cars.size(); ++i) {
        TLM::SDK::CarInfo& car = pluginInfo.cars[i];
        car.setDriverName(reader.driverName(i));
        car.setTeamName(reader.teamName(i));
        car.setClassName(reader.className(i));
        car.setCarName(reader.carName(i));
        car.setStatus(static_cast<TLM::SDK::CarStatus>(reader.status(i)));
        car.setDetailedTelemetry(reader.detailedTelemetry(i));
    }
    announceCarList();
}
