#pragma once

#include "sdk/lap.h"

#include <QList>
#include <QPointF>
#include <QString>

namespace rataip::laps {

/** The horizontal axis of a lap's plots. */
enum class Axis {
    Distance,  // from the line
    Time,      // since the lap's first sample
};

/** Whether a value can be drawn: neither a missing reading nor NaN or an infinity. */
[[nodiscard]] bool isReading(double value);

/** A span of numbers on an axis. */
struct Range {
    double low = 0.0;
    double high = 0.0;
};

/** The axis of a lap: one number for each sample. */
struct AxisValues {
    QList<double> values;
    QString name;
    QString unit;
};

/**
 * The axis of a lap, without values when the lap lacks the channels for it.
 *
 * Distance is the channel "lapdist" in its unit. Without that channel it is "lapdistpct" times the
 * lap value "Track length" in metres, or "lapdistpct" in percent when that value is missing, too.
 * Time is the channel "sessiontime" less its first reading. Missing readings stay missing (see
 * TLM::SDK::isValidValue()).
 */
[[nodiscard]] AxisValues axisOf(const TLM::SDK::Lap& lap, Axis axis);

/** Widens a range so that all readings of the axis lie in it. */
void widen(Range& range, const AxisValues& axis);

/**
 * A channel as points over an axis, sample by sample. A sample has no point when the channel or the
 * axis has no reading there, or has already ended.
 */
[[nodiscard]] QList<QPointF> curveOf(const TLM::SDK::Channel& channel, const AxisValues& axis);

/**
 * The curve reduced to at most 2 * `columns` + 2 of its points, so that a drawing `columns` wide
 * looks the same. Keeps the lowest and the highest point of each run, and the first and the last
 * point of the curve. A curve with no more points than that is returned unchanged.
 */
[[nodiscard]] QList<QPointF> thinned(const QList<QPointF>& curve, qsizetype columns);

}  // namespace rataip::laps
