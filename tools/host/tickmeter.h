#pragma once

#include "sdk/sample.h"

#include <QList>
#include <QtGlobal>

#include <chrono>
#include <optional>

namespace rataip::host {

/**
 * The simulator's number of the tick in which the samples were taken: their value "sessiontick". No
 * value until the plugin knows the own car.
 */
[[nodiscard]] std::optional<quint64> sessionTick(const QList<TLM::SDK::Sample>& samples);

/**
 * Counts the ticks that arrive and those that were lost, and measures their rate.
 *
 * A tick number that stays the same or decreases (another session, a rewound replay) starts a new
 * sequence and loses nothing. Ticks without a number only count as received.
 */
class TickMeter {
public:
    using Clock = std::chrono::steady_clock;

    explicit TickMeter(Clock::time_point now) : m_rateSince(now) {}

    /** A tick has arrived. */
    void add(std::optional<quint64> sessionTick);

    /** A new connection begins. Ticks missed before it do not count as lost. */
    void beginConnection(Clock::time_point now);

    /**
     * Ticks per second since the last call, or since the connection began. Zero when no time has
     * passed.
     */
    [[nodiscard]] double takeRate(Clock::time_point now);

    [[nodiscard]] quint64 received() const { return m_received; }
    [[nodiscard]] quint64 lost() const { return m_lost; }

private:
    quint64 m_received = 0;
    quint64 m_lost = 0;
    quint64 m_receivedAtRate = 0;
    std::optional<quint64> m_lastTick;
    Clock::time_point m_rateSince;
};

}  // namespace rataip::host
