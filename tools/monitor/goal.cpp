#include "tools/monitor/goal.h"

namespace rataip::monitor {

Goal::Goal(std::optional<int> laps, std::optional<std::chrono::milliseconds> duration)
    : m_laps(laps), m_duration(duration) {
    m_timeOver.setSingleShot(true);
    m_timeOver.setTimerType(Qt::PreciseTimer);  // a coarse timer may fire early
    connect(&m_timeOver, &QTimer::timeout, this, &Goal::onTimeOver);
}

void Goal::start() {
    if (m_duration) {
        m_timeOver.start(*m_duration);
    }
}

void Goal::onLap() {
    ++m_lapsArrived;
    if (m_laps && m_lapsArrived >= *m_laps) {
        end(ExitStatus::Ok);
    }
}

void Goal::onInterrupted() {
    endEarly();
}

void Goal::onSourceGone() {
    endEarly();
}

void Goal::onTimeOver() {
    if (!m_hasData) {
        end(ExitStatus::NoData);
    } else {
        end(m_laps ? ExitStatus::FellShort : ExitStatus::Ok);
    }
}

void Goal::endEarly() {
    if (!m_hasData) {
        end(ExitStatus::NoData);
    } else {
        end(m_laps || m_duration ? ExitStatus::FellShort : ExitStatus::Ok);
    }
}

void Goal::end(ExitStatus status) {
    if (m_hasEnded) {
        return;
    }
    m_hasEnded = true;
    m_timeOver.stop();
    emit ended(status);
}

}  // namespace rataip::monitor
