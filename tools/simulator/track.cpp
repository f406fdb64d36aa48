#include "tools/simulator/track.h"

#include "tools/simulator/performance.h"
#include "tools/simulator/wave.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace simulator {

namespace {

constexpr double kTableStepMeters = 2.0;

// Below this the road counts as straight and does not limit the speed.
constexpr double kStraightCurvature = 1e-6;

}  // namespace

Track::Track(TrackDescription description) : m_description(std::move(description)) {
    const auto entries = static_cast<std::size_t>(std::lround(length() / kTableStepMeters));
    m_step = length() / static_cast<double>(entries);
    m_curvature.assign(entries, 0.0);
    m_heading.assign(entries, 0.0);
    layOutCorners();
    workOutSpeeds();
}

Track Track::grandCircuit() {
    return Track({
        .internalName = "hollenried gp",
        .displayName = "Hollenried Park Circuit",
        .shortName = "Hollenried",
        .configName = "Grand Prix",
        .city = "Hollenried",
        .country = "Austria",
        .id = 741,
        .lengthMeters = 4612.0,
        .pitEntryPct = 0.955,
        .pitExitPct = 0.045,
        .firstStallPct = 0.966,
        .lastStallPct = 1.030,
        .pitLimitMetersPerS = 22.222,
        .sideGripMetersPerS2 = 31.0,
        .northOffsetRadians = 1.2043,
        .altitudeMeters = 612.0,
        .hillMeters = 14.0,
        .corners = {{0.085, 130.0, -95.0},
                    {0.150, 180.0, 60.0},
                    {0.215, 110.0, -70.0},
                    {0.330, 90.0, -110.0},
                    {0.395, 160.0, 75.0},
                    {0.450, 170.0, -80.0},
                    {0.560, 75.0, -120.0},
                    {0.630, 220.0, 65.0},
                    {0.700, 140.0, 50.0},
                    {0.760, 120.0, -85.0},
                    {0.835, 70.0, 90.0},
                    {0.870, 85.0, -100.0},
                    {0.925, 190.0, -40.0}},
    });
}

Track Track::shortCircuit() {
    return Track({
        .internalName = "quarry oval",
        .displayName = "Quarry Short Circuit",
        .shortName = "Quarry",
        .configName = "Club",
        .city = "Lower Quarry",
        .country = "Ireland",
        .id = 742,
        .lengthMeters = 1010.0,
        .pitEntryPct = 0.900,
        .pitExitPct = 0.080,
        .firstStallPct = 0.925,
        .lastStallPct = 1.045,
        .pitLimitMetersPerS = 16.667,
        .sideGripMetersPerS2 = 38.0,
        .northOffsetRadians = -0.5210,
        .altitudeMeters = 88.0,
        .hillMeters = 2.5,
        .corners = {{0.180, 160.0, 100.0},
                    {0.350, 150.0, 95.0},
                    {0.500, 120.0, -60.0},
                    {0.640, 170.0, 125.0},
                    {0.810, 150.0, 100.0}},
    });
}

double Track::around(double distance) const {
    const double rest = distance - std::floor(distance / length()) * length();
    // Rounding can give exactly the length of the lap, which is its start.
    return rest >= length() ? 0.0 : rest;
}

double Track::heading(double distance) const {
    const double rest = around(distance);
    const auto entry = std::min(static_cast<std::size_t>(rest / m_step), m_heading.size() - 1);
    const double beyond = rest - static_cast<double>(entry) * m_step;
    return wrappedAngle(m_heading[entry] + beyond * m_curvature[entry]);
}

double Track::height(double distance) const {
    const double turns = distance / length();
    return m_description.hillMeters * (wave(turns) + 0.4 * wave(3.0 * turns));
}

double Track::slope(double distance) const {
    const double turns = distance / length();
    return m_description.hillMeters * 2.0 * kPi / length() *
           (waveCos(turns) + 1.2 * waveCos(3.0 * turns));
}

double Track::stall(int slot, int slots) const {
    const double share = (slot + 0.5) / slots;
    const double pct = m_description.firstStallPct +
                       share * (m_description.lastStallPct - m_description.firstStallPct);
    return around(pct * length());
}

double Track::lookUp(const std::vector<double>& table, double distance) const {
    const double position = around(distance) / m_step;
    const auto entry = std::min(static_cast<std::size_t>(position), table.size() - 1);
    const double share = position - static_cast<double>(entry);
    const double next = table[entry + 1 == table.size() ? 0 : entry + 1];
    return table[entry] + share * (next - table[entry]);
}

void Track::layOutCorners() {
    for (std::size_t entry = 0; entry < m_curvature.size(); ++entry) {
        const double distance = static_cast<double>(entry) * m_step;
        for (const Corner& corner : m_description.corners) {
            const double start = corner.middlePct * length() - corner.lengthMeters / 2.0;
            const double share = ahead(start, distance) / corner.lengthMeters;
            if (share < 1.0) {
                const double radians = corner.degrees * kPi / 180.0;
                m_curvature[entry] += radians / corner.lengthMeters * (1.0 - waveCos(share));
            }
        }
    }
    double heading = m_description.northOffsetRadians;
    for (std::size_t entry = 0; entry < m_heading.size(); ++entry) {
        m_heading[entry] = heading;
        heading += m_curvature[entry] * m_step;
    }
}

void Track::workOutSpeeds() {
    m_speed.assign(m_curvature.size(), kTopSpeed);
    for (std::size_t entry = 0; entry < m_speed.size(); ++entry) {
        const double bend = std::abs(m_curvature[entry]);
        if (bend > kStraightCurvature) {
            m_speed[entry] =
                std::min(kTopSpeed, std::sqrt(m_description.sideGripMetersPerS2 / bend));
        }
    }
    // Twice around in each direction, so that limits act across the line.
    const std::size_t count = m_speed.size();
    for (std::size_t walked = 2 * count; walked > 0; --walked) {
        const std::size_t entry = (walked - 1) % count;
        const double after = m_speed[(entry + 1) % count];
        m_speed[entry] =
            std::min(m_speed[entry], std::sqrt(after * after + 2.0 * kBraking * m_step));
    }
    for (std::size_t walked = 0; walked < 2 * count; ++walked) {
        const double before = m_speed[walked % count];
        double& after = m_speed[(walked + 1) % count];
        after = std::min(after,
                         std::sqrt(before * before + 2.0 * availableAcceleration(before) * m_step));
    }
    m_lapTime = 0.0;
    for (const double speed : m_speed) {
        m_lapTime += m_step / speed;
    }
}

}  // namespace simulator
