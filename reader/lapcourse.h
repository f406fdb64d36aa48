#pragma once

#include <QList>
#include <QStringList>
#include <QtGlobal>

#include <array>
#include <cstddef>

/**
 * The course of a lap: what follows from the clock and the place of its samples.
 *
 * It is derived while the lap is recorded, a few samples at a time. At a session's end 64 laps are
 * closed in one tick, and to read and write thousands of numbers of each then would take longer
 * than all the rest.
 *
 * Nothing is checked: a clock that stands still gives speeds that are infinite or not a number.
 */
class LapCourse {
public:
    LapCourse() = default;

    /** An empty course over a track of this length. */
    explicit LapCourse(double kilometres) : m_kilometres(kilometres) {}

    /**
     * How many samples there may come to be; a hint. Room is taken for 20 minutes at most: after a
     * lap during which a car stood for hours the next one is hardly as long.
     */
    void expect(qsizetype samples);

    /** The track's length. When it changes on the way the course is spoiled. */
    void setTrack(double kilometres);

    /** The next sample: its time in seconds and the part of the lap that lies behind it. */
    void add(double clock, double fraction);

    /** The course is not that of the lap's samples any more. */
    void spoil();

    /** Back to no sample. */
    void clear();

    /** Whether this is the course of all of a lap's `samples` samples over such a track. */
    [[nodiscard]] bool isOf(qsizetype samples, double kilometres) const;

    /** Gives the last sample its entries. Nothing may be added behind. */
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
    struct Place {
        double clock;
        double fraction;
    };

    // Samples that are derived together.
    static constexpr qsizetype blockSize = 16;

    void deriveKept();
    void derive(const Place& place);
    void appendEntries(double step, double speed);

    std::array<Place, blockSize> m_kept{};
    qsizetype m_keptCount = 0;
    qsizetype m_size = 0;  // with the kept ones
    qsizetype m_expectedSamples = 0;
    double m_kilometres = 0.0;
    bool m_isSpoiled = false;

    // The last sample derived.
    bool m_hasBegun = false;
    double m_clock = 0.0;
    double m_here = 0.0;
    double m_elapsed = 0.0;
    double m_lastStep = 0.0;
    double m_lastSpeed = 0.0;
    bool m_hasSteepRise = false;  // without which there is no spike

    QList<double> m_timeSteps;
    QList<double> m_time;
    QList<double> m_distance;
    QList<double> m_speed;
};
