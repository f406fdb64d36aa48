#include "tools/host/sourceconnector.h"

#include <algorithm>

namespace rataip::host {

namespace {

// Short enough that a restarted source appears at once. An attempt without a source costs almost
// nothing.
constexpr std::chrono::milliseconds kShortestInterval{250};
constexpr std::chrono::milliseconds kLongestInterval{1000};

// An attempt blocks its thread while it waits for the data of a silent source, such as the one that
// a crashed simulator leaves. The pause after it is a multiple of its duration, so that the thread
// can do its other work, such as drawing a window.
constexpr int kIntervalsForAnAttempt = 3;

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
    // The next start() begins a new wait.
    m_waitingSince.invalidate();
    m_source.disconnectFromSource();
}

void SourceConnector::attempt() {
    m_attemptBegan.start();
    m_source.connectToSource();
    m_attemptBegan.invalidate();
}

std::chrono::milliseconds SourceConnector::interval() const {
    const std::chrono::milliseconds attemptTook(m_attemptBegan.isValid() ? m_attemptBegan.elapsed()
                                                                         : 0);
    return std::clamp(kIntervalsForAnAttempt * attemptTook, kShortestInterval, kLongestInterval);
}

std::chrono::milliseconds SourceConnector::timeWaited() const {
    return std::chrono::milliseconds(m_waitingSince.isValid() ? m_waitingSince.elapsed() : 0);
}

void SourceConnector::waitForSource() {
    if (!m_waitingSince.isValid()) {
        m_waitingSince.start();
        emit waiting();
    }
    std::chrono::milliseconds untilNext = interval();
    if (m_patience) {
        const std::chrono::milliseconds left = *m_patience - timeWaited();
        untilNext = std::clamp(left, std::chrono::milliseconds::zero(), untilNext);
    }
    // By the timer even when it is due at once, because the plugin is still in the call or the tick
    // that emitted the signal.
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
