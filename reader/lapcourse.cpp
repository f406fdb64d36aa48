#include "reader/lapcourse.h"

#include <algorithm>
#include <cmath>
#include <span>

using namespace Qt::StringLiterals;

namespace {

constexpr double metresPerKilometre = 1000.0;

// The longest room taken on the word of a hint: 20 minutes at 60 samples a second, as long as that
// of the recorded channels.
constexpr qsizetype maxExpectedSamples = 72'000;

// A speed spike leaves and returns by more than this, in the unit of speed, and by more than this
// many times what remains of it.
constexpr double spikeStep = 5.0;
constexpr double spikeRatio = 5.0;

bool isSpike(double before, double reading, double after) {
    const double rise = reading - before;
    const double fall = after - reading;
    return rise * fall < 0.0 &&
           std::fabs(rise) + std::fabs(fall) > spikeRatio * std::fabs(rise + fall) &&
           (rise > spikeStep || fall > spikeStep);
}

}  // namespace

void LapCourse::expect(qsizetype samples) {
    m_expectedSamples = std::clamp<qsizetype>(samples, 0, maxExpectedSamples);
}

void LapCourse::setTrack(double kilometres) {
    if (m_size == 0) {
        m_kilometres = kilometres;
    } else if (kilometres != m_kilometres) {
        spoil();
    }
}

void LapCourse::add(double clock, double fraction) {
    if (m_isSpoiled) {
        return;
    }
    m_kept[static_cast<std::size_t>(m_keptCount++)] = {clock, fraction};
    ++m_size;
    // Laps that expect different lengths are not derived in the same ticks.
    const qsizetype phase = m_expectedSamples % blockSize;
    if (m_keptCount == blockSize || m_size + phase == blockSize) {
        deriveKept();
    }
}

void LapCourse::spoil() {
    clear();
    m_isSpoiled = true;
}

void LapCourse::clear() {
    const qsizetype expectedSamples = m_expectedSamples;
    *this = LapCourse();
    m_expectedSamples = expectedSamples;
}

bool LapCourse::isOf(qsizetype samples, double kilometres) const {
    return !m_isSpoiled && samples == m_size && kilometres == m_kilometres;
}

void LapCourse::deriveKept() {
    if (m_timeSteps.isEmpty()) {
        for (QList<double>* const list : {&m_timeSteps, &m_time, &m_distance, &m_speed}) {
            list->reserve(m_expectedSamples);
        }
    }
    for (const Place& place : std::span(m_kept).first(static_cast<std::size_t>(m_keptCount))) {
        derive(place);
    }
    m_keptCount = 0;
}

void LapCourse::derive(const Place& place) {
    const double there = place.fraction * m_kilometres * metresPerKilometre;
    if (m_hasBegun) {
        const double step = place.clock - m_clock;
        appendEntries(step, (there - m_here) / step);
        m_elapsed += step;
    }
    m_hasBegun = true;
    m_clock = place.clock;
    m_here = there;
}

void LapCourse::appendEntries(double step, double speed) {
    if (!m_speed.isEmpty() && speed - m_lastSpeed > spikeStep) {
        m_hasSteepRise = true;
    }
    m_timeSteps.append(step);
    m_time.append(m_elapsed);
    m_distance.append(m_here);
    m_speed.append(speed);
    m_lastStep = step;
    m_lastSpeed = speed;
}

void LapCourse::complete() {
    deriveKept();
    if (m_hasBegun) {
        appendEntries(m_lastStep, m_lastSpeed);
    }
}

QStringList LapCourse::repairSpikes() {
    QStringList lines;
    if (!m_hasSteepRise) {
        return lines;
    }
    const std::span<double> speed(m_speed);
    for (std::size_t i = 1; i + 1 < speed.size(); ++i) {
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
