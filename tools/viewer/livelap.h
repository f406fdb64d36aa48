#pragma once

#include "sdk/lap.h"
#include "sdk/sample.h"

#include <QList>
#include <QPointF>
#include <QString>

#include <array>

namespace rataip::viewer {

/** A channel of the own car that is drawn live. */
struct Trace {
    const char* channel;
    const char* label;
};

inline constexpr std::array<Trace, 5> kLiveTraces = {{{"speed", "Speed"},
                                                      {"throttle", "Throttle"},
                                                      {"brake", "Brake"},
                                                      {"gear", "Gear"},
                                                      {"steeringwheelangle", "Steering"}}};

/** The curves of one lap, in the order of `liveTraces`, over the share of the lap in percent. */
using TraceCurves = std::array<QList<QPointF>, kLiveTraces.size()>;

/** Whether the own car drove the lap as a flying lap, to its end. */
[[nodiscard]] bool isOwnFlyingLap(const TLM::SDK::Lap& lap);

/**
 * The own car's current lap, tick by tick, and its previous flying lap.
 *
 * A new lap begins when the share of the lap drops by more than half. A smaller drop (a spin, a car
 * that was reset) continues the lap. Ticks without a position on the track are ignored. Readings
 * are kept in the units that drivers expect (see laps::displayUnit()). While the car stands still,
 * only the readings needed to draw the line are kept, since it may stand for hours.
 */
class LiveLap {
public:
    /** The own car's values of a tick. */
    void add(const TLM::SDK::DynamicData& values);

    /** A completed flying lap of the own car becomes the previous lap. Other laps are ignored. */
    void addFinished(const TLM::SDK::Lap& lap);

    /** Begins the current lap anew, for a new connection. */
    void restart();

    [[nodiscard]] const TraceCurves& current() const { return m_current; }
    [[nodiscard]] const TraceCurves& previous() const { return m_previous; }

    /** Changes whenever previous() does. */
    [[nodiscard]] int previousRevision() const { return m_previousRevision; }

    /** The unit of a trace, empty before its first reading. */
    [[nodiscard]] const QString& unit(std::size_t trace) const { return m_units[trace]; }

private:
    TraceCurves m_current;
    TraceCurves m_previous;
    std::array<QString, kLiveTraces.size()> m_units;
    double m_lastShare = -1.0;
    int m_previousRevision = 0;
};

}  // namespace rataip::viewer
