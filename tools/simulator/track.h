#pragma once

#include <string>
#include <vector>

namespace simulator {

/** A corner: its middle, its length and its angle. */
struct Corner {
    double middlePct;     // fraction of the lap
    double lengthMeters;  // from where the steering starts to where it ends
    double degrees;       // positive to the left
};

/** The description of a track, from which everything else is computed. */
struct TrackDescription {
    std::string internalName;
    std::string displayName;
    std::string shortName;
    std::string configName;
    std::string city;
    std::string country;
    int id;
    double lengthMeters;
    double pitEntryPct;          // pit road begins, before the line
    double pitExitPct;           // pit road ends, after the line
    double firstStallPct;        // stalls are from here, across the line,
    double lastStallPct;         // to here (above 1 once past the line)
    double pitLimitMetersPerS;   // speed limit on pit road
    double sideGripMetersPerS2;  // highest acceleration across the car
    double northOffsetRadians;   // heading at the line
    double altitudeMeters;
    double hillMeters;  // half the difference between the highest and lowest points
    std::vector<Corner> corners;
};

/**
 * The road as a function of the distance from the start/finish line in metres. Distances wrap
 * around the lap, so that any finite number is valid.
 */
class Track {
public:
    explicit Track(TrackDescription description);

    /** A circuit of 4.6 km, about 95 s a lap. */
    static Track grandCircuit();

    /** A circuit of 1 km, about 22 s a lap, for tests that need many laps. */
    static Track shortCircuit();

    const TrackDescription& description() const { return m_description; }
    double length() const { return m_description.lengthMeters; }

    /** Wraps a distance into 0 (included) to length() (excluded). */
    double around(double distance) const;

    /** Metres to drive forwards from `from` to `to`, 0 to length(). */
    double ahead(double from, double to) const { return around(to - from); }

    /** Curvature of the road, 1/m, positive to the left. */
    double curvature(double distance) const { return lookUp(m_curvature, distance); }

    /** Heading of the road, -pi to pi. */
    double heading(double distance) const;

    /** Metres above the line. */
    double height(double distance) const;

    /** Rise of the road per metre. */
    double slope(double distance) const;

    /** Speed of the fastest car on a flying lap, m/s. */
    double speed(double distance) const { return lookUp(m_speed, distance); }

    /** Time of a flying lap at speed(), s. */
    double lapTime() const { return m_lapTime; }

    double pitEntry() const { return m_description.pitEntryPct * length(); }
    double pitExit() const { return m_description.pitExitPct * length(); }

    /** The position of the stall of slot `slot` of `slots`. */
    double stall(int slot, int slots) const;

private:
    double lookUp(const std::vector<double>& table, double distance) const;
    void layOutCorners();
    void workOutSpeeds();

    TrackDescription m_description;
    double m_step = 0.0;  // metres between two table entries
    std::vector<double> m_curvature;
    std::vector<double> m_heading;
    std::vector<double> m_speed;
    double m_lapTime = 0.0;
};

}  // namespace simulator
