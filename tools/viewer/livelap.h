#pragma once

#include "sdk/lap.h"
#include "sdk/sample.h"

#include <QList>
#include <QPointF>
#include <QString>

#include <array>

namespace rataip::viewer {

/** What is drawn of the own car while it drives. */
struct Trace {
    const char* channel;
    const char* label;
};

inline constexpr std::array<Trace, 5> liveTraces = {{{"speed", "Speed"},
                                                     {"throttle", "Throttle"},
                                                     {"brake", "Brake"},
                                                     {"gear", "Gear"},
                                                     {"steeringwheelangle", "Steering"}}};

/** The curves of one lap, in the order of `liveTraces`, over the share of the lap in percent. */
using TraceCurves = std::array<QList<QPointF>, liveTraces.size()>;

/** Whether the own car drove the lap as a flying lap, to its end. */
[[nodiscard]] bool isOwnFlyingLap(const TLM::SDK::Lap& lap);

/**
 * The lap that the own car is on, tick by tick, and its previous flying lap.
 *
 * A share of the lap that falls back by more than half begins a new lap; one that falls by less (a
 * spin, a car set back) goes on. Ticks without a place on the track are left out. Readings are kept
 * in the units that a driver reads (see laps::displayUnit()). Of the readings at a place where the
 * car stands, those that draw the line are kept: it may stand there for hours.
 */
class LiveLap {
public:
    /** The own car's values of a tick. */
    void add(const TLM::SDK::DynamicData& values);

    /** A finished lap; one of the own car that was flown to its end becomes the previous one. */
    void addFinished(const TLM::SDK::Lap& lap);

    /** A new connection begins: what was driven before does not go on. */
    void restart();

    [[nodiscard]] const TraceCurves& current() const { return m_current; }
    [[nodiscard]] const TraceCurves& previous() const { return m_previous; }

    /** Changes whenever previous() does. */
    [[nodiscard]] int previousRevision() const { return m_previousRevision; }

    /** The unit of a trace, empty while nothing is known of it. */
    [[nodiscard]] const QString& unit(std::size_t trace) const { return m_units[trace]; }

private:
    TraceCurves m_current;
    TraceCurves m_previous;
    std::array<QString, liveTraces.size()> m_units;
    double m_lastShare = -1.0;
    int m_previousRevision = 0;
};

}  // namespace rataip::viewer
