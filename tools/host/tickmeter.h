#pragma once

#include "sdk/sample.h"

#include <QList>
#include <QtGlobal>

#include <chrono>
#include <optional>

namespace rataip::host {

/**
 * The simulator's running number of the tick that the samples were taken in (their value
 * "sessiontick"); nothing while the plugin does not know the own car yet.
 */
[[nodiscard]] std::optional<quint64> sessionTick(const QList<TLM::SDK::Sample>& samples);

/**
 * Counts the ticks that arrive, how fast they come, and how many the source made that did not.
 *
 * A tick number that stays or goes back begins a new count (another session, a replay rewound) and
 * counts as nothing lost; ticks without a number are counted as received only.
 */
class TickMeter {
public:
    using Clock = std::chrono::steady_clock;

    explicit TickMeter(Clock::time_point now) : m_rateSince(now) {}

    /** A tick has arrived. */
    void add(std::optional<quint64> sessionTick);

    /** A new connection begins: the gap to the tick before it is not a loss. */
    void beginConnection(Clock::time_point now);

    /**
     * Ticks received a second since the last call, or since the connection began. Zero when no
     * time has passed.
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
