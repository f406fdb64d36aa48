#include "reader/lapcourse.h"

#include <cmath>

using namespace Qt::StringLiterals;

namespace reader {

namespace {

constexpr double kMetresPerKilometre = 1000.0;

// A speed spike leaves and returns by more than this, in the unit of speed, and by more than this
// many times what remains of it.
constexpr double kSpikeStep = 5.0;
constexpr double kSpikeRatio = 5.0;

bool isSpike(double before, double reading, double after) {
    const double rise = reading - before;
    const double fall = after - reading;
    return rise * fall < 0.0 &&
           std::fabs(rise) + std::fabs(fall) > kSpikeRatio * std::fabs(rise + fall) &&
           (rise > kSpikeStep || fall > kSpikeStep);
}

}  // namespace

LapCourse::LapCourse(double kilometres, qsizetype expectedSamples)
    : m_kilometres(kilometres), m_expectedSamples(expectedSamples) {}

void LapCourse::add(double clock, double fraction) {
    const double there = fraction * m_kilometres * kMetresPerKilometre;
    if (m_size == 0) {
        for (QList<double>* const list : {&m_timeSteps, &m_time, &m_distance, &m_speed}) {
            list->reserve(m_expectedSamples);
        }
    } else {
        const double step = clock - m_clock;
        appendEntries(step, (there - m_here) / step);
        m_elapsed += step;
    }
    ++m_size;
    m_clock = clock;
    m_here = there;
}

void LapCourse::appendEntries(double step, double speed) {
    if (!m_speed.isEmpty() && speed - m_lastSpeed > kSpikeStep) {
        m_hasSteepRise = true;
    }
    m_timeSteps.append(step);
    m_time.append(m_elapsed);
    m_distance.append(m_here);
    m_speed.append(speed);
    m_lastStep = step;
    m_lastSpeed = speed;
}

bool LapCourse::isOf(qsizetype samples, double kilometres) const {
    return samples == m_size && kilometres == m_kilometres;
}

void LapCourse::complete() {
    if (m_size > 0) {
        appendEntries(m_lastStep, m_lastSpeed);
    }
}

QStringList LapCourse::repairSpikes() {
    QStringList lines;
    if (!m_hasSteepRise) {
        return lines;
    }
    double* const speed = m_speed.data();
    for (qsizetype i = 1; i + 1 < m_speed.size(); ++i) {
        const double before = speed[i - 1];
        const double after = speed[i + 1];
        if (isSpike(before, speed[i], after)) {
            const double peak = speed[i];
            speed[i] = (before + after) * 0.5;
            lines.append(u"peak detected %1 %2 %3 %4"_s.arg(i).arg(before).arg(peak).arg(after));
            lines.append(u"peak fixed %1"_s.arg(speed[i]));
        }
    }
    return lines;
}

}  // namespace reader
