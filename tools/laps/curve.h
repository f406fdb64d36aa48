#pragma once

#include "sdk/lap.h"

#include <QList>
#include <QPointF>
#include <QString>

namespace rataip::laps {

/** What a lap is drawn over. */
enum class Axis {
    Distance,  // from the line
    Time,      // since the lap's first sample
};

/** Whether there is a reading that can be drawn: not a missing one, nor NaN or an infinity. */
[[nodiscard]] bool isReading(double value);

/** A span of numbers on an axis. */
struct Range {
    double low = 0.0;
    double high = 0.0;
};

/** One number for each sample of a lap, to draw its channels over. */
struct AxisValues {
    QList<double> values;
    QString name;
    QString unit;
};

/**
 * The axis of a lap. Distance is the channel "lapdist" in its unit; where there is none it is
 * "lapdistpct" times the lap value "Track length", in metres, or in percent without that value.
 * Time is the channel "sessiontime" less its first reading. No values when the lap has no channel
 * that says it. A missing reading is missing in the axis, too (see TLM::SDK::isValidValue()).
 */
[[nodiscard]] AxisValues axisOf(const TLM::SDK::Lap& lap, Axis axis);

/** Widens a range so that all readings of the axis lie in it. */
void widen(Range& range, const AxisValues& axis);

/**
 * A channel as points over an axis, sample by sample. Samples without a reading, of the channel or
 * of the axis, have no point, nor have those beyond the end of the shorter one.
 */
[[nodiscard]] QList<QPointF> curveOf(const TLM::SDK::Channel& channel, const AxisValues& axis);

/**
 * The curve with at most 2 * `columns` + 2 of its points, chosen so that a drawing `columns` wide
 * looks the same: of each run of points the lowest and the highest stay, and so do the first and
 * the last point. A curve that has no more points is returned as it is.
 */
[[nodiscard]] QList<QPointF> thinned(const QList<QPointF>& curve, qsizetype columns);

}  // namespace rataip::laps
