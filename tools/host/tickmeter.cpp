#include "tools/host/tickmeter.h"

namespace rataip::host {

std::optional<quint64> sessionTick(const QList<TLM::SDK::Sample>& samples) {
    if (samples.isEmpty()) {
        return std::nullopt;
    }
    bool isNumber = false;
    const quint64 tick =
        samples.first().value(QStringLiteral("sessiontick")).value.toULongLong(&isNumber);
    return isNumber ? std::optional<quint64>(tick) : std::nullopt;
}

void TickMeter::add(std::optional<quint64> sessionTick) {
    ++m_received;
    if (sessionTick && m_lastTick && *sessionTick > *m_lastTick) {
        m_lost += *sessionTick - *m_lastTick - 1;
    }
    if (sessionTick) {
        m_lastTick = sessionTick;
    }
}

void TickMeter::beginConnection(Clock::time_point now) {
    m_lastTick.reset();
    m_receivedAtRate = m_received;
    m_rateSince = now;
}

double TickMeter::takeRate(Clock::time_point now) {
    const std::chrono::duration<double> seconds = now - m_rateSince;
    const quint64 ticks = m_received - m_receivedAtRate;
    if (seconds.count() <= 0.0) {
        return 0.0;
    }
    m_rateSince = now;
    m_receivedAtRate = m_received;
    return static_cast<double>(ticks) / seconds.count();
}

}  // namespace rataip::host
