#include "plugin/irpluginlive.h"

#include "irsdk/allocation.h"

#include <QLoggingCategory>

#include <chrono>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

Q_LOGGING_CATEGORY(pluginLog, "rataip.plugin")

constexpr int kTickWaitMilliseconds = 20;
constexpr int kConnectWaitMilliseconds = 200;
constexpr std::chrono::milliseconds kTickInterval(10);

}  // namespace

iRPluginLive::iRPluginLive() = default;

iRPluginLive::~iRPluginLive() {
    closeSilently();
}

void iRPluginLive::initialize() {
    const ConnectionGuard guard(*this);
    if (!irsdk::tryAllocate([&] { setUp(guard); })) {
        static_cast<void>(irsdk::tryAllocate([] {
            qCWarning(pluginLog, "The plugin cannot be set up: there is not enough memory");
        }));
    }
}

void iRPluginLive::setUp(const ConnectionGuard& guard) {
    endAnnouncedConnections(guard);
    if (guard.isDeleted()) {
        return;
    }
    tickWaitMs = kTickWaitMilliseconds;
    connectWaitMs = kConnectWaitMilliseconds;
    giveBuffersBack();
    readerInUse().initialize();
    lastSessionInfoUpdate = kNoSessionInfoSeen;
    pluginInfo.setPluginName(pluginName());
    pluginInfo.setSourceName(sourceName());
    pluginInfo.cars.resize(iRTelemetryReader::kSimulatorCars);
    for (int i = 0; i < iRTelemetryReader::kSimulatorCars; ++i) {
        pluginInfo.cars[i].setCarId(QString::number(i));
    }
    createTimer();
    announceCarList();
}

/** So that sendDisconnected() follows every sendConnected(). */
void iRPluginLive::endAnnouncedConnections(const ConnectionGuard& guard) {
    if (connected) {
        disconnectFromSource();
    }
    if (guard.isDeleted() || !connected) {
        return;
    }
    refusesConnections = true;
    disconnectFromSource();
    if (!guard.isDeleted()) {
        refusesConnections = false;
    }
}

void iRPluginLive::createTimer() {
    // A second initialize() keeps it: a slot of the timer's own tick may have called that.
    if (timer != nullptr) {
        return;
    }
    auto made = std::make_unique<QTimer>(this);
    made->setInterval(kTickInterval);
    connect(made.get(), &QTimer::timeout, this, &iRPluginLive::tick);
    timer = made.release();
}

void iRPluginLive::closeSilently() {
    if (connected) {
        endConnection();
        irsdk_shutdown();
    }
}

void iRPluginLive::announceCarList() {
    // A copy, because a slot may change or delete this object while other slots still read it.
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
    const ConnectionGuard guard(*this);
    if (!irsdk::tryAllocate([this] { refreshCarList(); }) && guard.isSameConnection()) {
        endForWantOfMemory();
    }
}

void iRPluginLive::refreshCarList() {
    if (!reader || !reader->updateCarList()) {
        return;
    }
    for (int i = 0; i < pluginInfo.cars.size(); ++i) {
        TLM::SDK::CarInfo& car = pluginInfo.cars[i];
        car.setDriverName(reader->driverName(i));
        car.setTeamName(reader->teamName(i));
        car.setClassName(reader->className(i));
        car.setCarName(reader->carName(i));
        car.setStatus(static_cast<TLM::SDK::CarStatus>(reader->status(i)));
        car.setDetailedTelemetry(reader->detailedTelemetry(i));
    }
    announceCarList();
}
