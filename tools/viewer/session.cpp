#include "tools/viewer/session.h"

#include <utility>

namespace rataip::viewer {

using TLM::SDK::DataEmitter;
using TLM::SDK::Lap;
using TLM::SDK::Sample;

namespace {

using Clock = host::TickMeter::Clock;

// About thirty ticks. Shorter gaps show in the number of lost ticks.
constexpr qint64 kLongestGapMs = 500;

}  // namespace

Session::Session() : m_ticks(Clock::now()) {}

Session::~Session() {
    // Signals that the plugin emits while it is being destroyed must not arrive here.
    if (m_source != nullptr) {
        disconnect(m_source->dataEmitter(), nullptr, this, nullptr);
        m_connector->stop();
    }
}

bool Session::loadPlugin(const QString& path) {
    host::LivePlugin::LoadResult loaded = host::LivePlugin::load(path);
    if (!loaded.plugin) {
        setPluginError(loaded.error);
        return false;
    }
    m_plugin = std::move(loaded.plugin);
    setSource(m_plugin->source());
    return true;
}

void Session::setPluginError(const QString& sentence) {
    m_pluginError = sentence;
    emit stateChanged();
}

void Session::setSource(TLM::SDK::PluginInterfaceLive& source) {
    m_source = &source;
    m_pluginError.clear();
    const DataEmitter* const emitter = source.dataEmitter();
    connect(emitter, &DataEmitter::sendConnected, this, &Session::onConnected);
    connect(emitter, &DataEmitter::sendDisconnected, this, &Session::onDisconnected);
    connect(emitter, &DataEmitter::sendConnectivityAvailable, this, &Session::probed);
    connect(emitter, &DataEmitter::sendCarListChanged, this,
            [this](const TLM::SDK::LivePluginInfo& info) { m_field.setCars(info); });
    connect(emitter, &DataEmitter::sendSamples, this, &Session::onSamples);
    connect(emitter, &DataEmitter::sendTelemetryLap, this, &Session::onLap);
    connect(emitter, &DataEmitter::sendMessage, this, &Session::message);

    m_connector = std::make_unique<host::SourceConnector>(source, std::nullopt);
    connect(m_connector.get(), &host::SourceConnector::waiting, this,
            [this] { setState(State::Waiting); });
    source.initialize();
    setState(State::Disconnected);
}

void Session::probe() {
    if (m_source != nullptr) {
        m_source->checkConnectionAvailability();
    }
}

void Session::connectToSource() {
    if (m_state == State::Disconnected) {
        m_connector->start();
    }
}

void Session::disconnectFromSource() {
    if (m_state == State::Waiting || m_state == State::Connected) {
        m_connector->stop();
        setState(State::Disconnected);
    }
}

QString Session::pluginText() const {
    return m_source == nullptr ? QString()
                               : QStringLiteral("%1 %2 for %3")
                                     .arg(m_source->pluginName(), m_source->pluginVersion(),
                                          m_source->sourceName());
}

bool Session::isDataArriving() const {
    return m_state == State::Connected && m_sinceTick.isValid() &&
           m_sinceTick.elapsed() < kLongestGapMs;
}

void Session::setState(State state) {
    if (m_state != state) {
        m_state = state;
        emit stateChanged();
    }
}

void Session::onConnected() {
    m_ticks.beginConnection(Clock::now());
    m_liveLap.restart();
    setState(State::Connected);
}

void Session::onDisconnected() {
    m_field.clearSamples();
    m_sinceTick.invalidate();
}

void Session::onSamples(const QList<Sample>& samples) {
    m_ticks.add(host::sessionTick(samples));
    m_sinceTick.start();
    m_field.setSamples(samples);
    const std::optional<qsizetype> own = m_field.ownSlot();
    if (own && *own < samples.size()) {
        m_liveLap.add(samples.at(*own));
    }
}

void Session::onLap(const QSharedPointer<Lap>& lap) {
    if (lap->isEmpty()) {
        return;
    }
    m_liveLap.addFinished(*lap);
    emit lapArrived(lap);
}

}  // namespace rataip::viewer
