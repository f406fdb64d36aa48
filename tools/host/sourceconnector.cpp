#include "tools/host/sourceconnector.h"

#include <algorithm>

namespace rataip::host {

namespace {

// Short enough that a restarted source is back on the screen at once. An attempt at a source that
// is not there costs next to nothing.
constexpr std::chrono::milliseconds shortestInterval{250};
constexpr std::chrono::milliseconds longestInterval{1000};

// An attempt at a source that is there but silent (what a crashed simulator left) waits for its
// data and keeps its thread from everything else meanwhile, a window's drawing among it. So the
// thread is left alone for a multiple of the time that the attempt took.
constexpr int intervalsForAnAttempt = 3;

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
    // The next start() begins a time of waiting of its own.
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
    return std::clamp(intervalsForAnAttempt * attemptTook, shortestInterval, longestInterval);
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
