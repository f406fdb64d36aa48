#pragma once

#include <QList>
#include <QStringList>
#include <QtGlobal>

namespace reader {

/**
 * The course of a lap: what follows from the clock and the place of its samples.
 *
 * It is derived while the lap is recorded. At a session's end 64 laps are closed in one tick, and
 * to read and write thousands of numbers of each then would take twice as long as all the rest.
 *
 * Nothing is checked: a clock that stands still gives speeds that are infinite or NaN.
 */
class LapCourse {
public:
    /** An empty course over a track of this length, of so many samples at most: a hint. */
    explicit LapCourse(double kilometres = 0.0, qsizetype expectedSamples = 0);

    /** The next sample: its time in seconds and its place as a part of the lap. */
    void add(double clock, double fraction);

    /** Whether this is the course of a lap of so many samples over such a track. */
    [[nodiscard]] bool isOf(qsizetype samples, double kilometres) const;

    [[nodiscard]] double kilometres() const { return m_kilometres; }

    /** Gives the last sample its entries. Nothing may be added after it. */
    void complete();

    /**
     * Replaces every speed that leaves its neighbours and returns at once by their mean. Each
     * replacement is seen by the next one. Returns what the debug log is to tell of it.
     */
    [[nodiscard]] QStringList repairSpikes();

    /** One entry for each sample. The last step and the last speed repeat the ones before. */
    [[nodiscard]] const QList<double>& timeSteps() const { return m_timeSteps; }  // to the next one
    [[nodiscard]] const QList<double>& time() const { return m_time; }  // since the first sample
    [[nodiscard]] const QList<double>& distance() const { return m_distance; }  // metres
    [[nodiscard]] const QList<double>& speed() const { return m_speed; }        // to the next one

private:
    void appendEntries(double step, double speed);

    double m_kilometres;
    qsizetype m_expectedSamples;
    qsizetype m_size = 0;

    // The last sample.
    double m_clock = 0.0;
    double m_here = 0.0;
    double m_elapsed = 0.0;
    double m_lastStep = 0.0;
    double m_lastSpeed = 0.0;

    bool m_hasSteepRise = false;  // of the speed: only then is there a spike
    QList<double> m_timeSteps;
    QList<double> m_time;
    QList<double> m_distance;
    QList<double> m_speed;
};

}  // namespace reader
