#pragma once

#include <QList>
#include <QString>

namespace TLM::SDK {

/**
 * A column of a lap: one number for each sample, with a unit. All channels of a lap are indexed
 * alike.
 *
 * No operation checks its index: it MUST lie in 0 .. samples.size() - 1. A missing reading is a
 * number that isValid() refuses, see isValidValue().
 */
class Channel {
public:
    /** Whether entry `i` is a reading: neither the missing marker nor NaN. */
    bool isValid(long long i) const;

    double sample(long long i) const { return samples.at(i); }

    /** Overwrites entry `i`; the list never grows. */
    void setSample(long long i, double v) { samples[i] = v; }

    /**
     * The unit's text as the producer names it; empty for none. rataip keeps the units of the
     * samples ("m/s", "rad", "s", "kg") with one exception: a share from 0 to 1 is "%" in a sample
     * and "pu", per unit, in a lap.
     */
    QString unit() const { return m_unit; }
    void setUnit(const QString& unit) { m_unit = unit; }

    /** The entries. Producers append to the list and size it themselves. */
    QList<double> samples;

private:
    friend struct RecordLayout;  // holds the layout to what hosts are built against

    QString m_unit;
};

}  // namespace TLM::SDK
