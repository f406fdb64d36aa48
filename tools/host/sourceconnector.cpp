#include "tools/host/sourceconnector.h"

#include <algorithm>

namespace rataip::host {

namespace {

// Short enough that a restarted source is back on the screen at once; an attempt at a source that
// is not there costs next to nothing.
constexpr std::chrono::milliseconds attemptInterval{250};

}  // namespace

SourceConnector::SourceConnector(TLM::SDK::PluginInterfaceLive& source,
                                 std::optional<std::chrono::milliseconds> patience)
    : m_source(source), m_patience(patience) {
    m_nextAttempt.setSingleShot(true);
    connect(&m_nextAttempt, &QTimer::timeout, this, &SourceConnector::attempt);

    const TLM::SDK::DataEmitter* const emitter = source.dataEmitter();
    connect(emitter, &TLM::SDK::DataEmitter::sendConnected, this, &SourceConnector::onConnected);
    connect(emitter, &TLM::SDK::DataEmitter::sendNotConnected, this,
            &SourceConnector::onNotConnected);
    connect(emitter, &TLM::SDK::DataEmitter::sendDisconnected, this,
            &SourceConnector::onDisconnected);
}

void SourceConnector::start() {
    m_active = true;
    attempt();
}

void SourceConnector::stop() {
    m_active = false;
    m_nextAttempt.stop();
    m_source.disconnectFromSource();
}

void SourceConnector::attempt() {
    m_source.connectToSource();
}

std::chrono::milliseconds SourceConnector::timeWaited() const {
    return std::chrono::milliseconds(m_waitingSince.isValid() ? m_waitingSince.elapsed() : 0);
}

void SourceConnector::waitForSource() {
    if (!m_waitingSince.isValid()) {
        m_waitingSince.start();
        emit waiting();
    }
    std::chrono::milliseconds untilNext = attemptInterval;
    if (m_patience) {
        const std::chrono::milliseconds left = *m_patience - timeWaited();
        untilNext = std::clamp(left, std::chrono::milliseconds::zero(), attemptInterval);
    }
    // By the timer even when it is due at once: the plugin has not finished the call or the tick
    // that brought us here.
    m_nextAttempt.start(untilNext);
}

void SourceConnector::onConnected() {
    m_nextAttempt.stop();
    m_waitingSince.invalidate();
}

void SourceConnector::onNotConnected() {
    if (!m_active) {
        return;
    }
    if (m_patience && timeWaited() >= *m_patience) {
        m_active = false;
        emit gaveUp();
        return;
    }
    waitForSource();
}

void SourceConnector::onDisconnected() {
    if (m_active) {
        waitForSource();
    }
}

}  // namespace rataip::host
