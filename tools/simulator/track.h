#pragma once

#include <string>
#include <vector>

namespace simulator {

/** A bend: where its middle lies, how long it is and by how much the track turns in it. */
struct Corner {
    double middlePct;     // fraction of the lap
    double lengthMeters;  // from where the steering starts to where it ends
    double degrees;       // positive to the left
};

/** What makes a track; everything else is worked out from it. */
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
    double firstStallPct;        // stalls lie from here, across the line,
    double lastStallPct;         // to here (above 1 once past the line)
    double pitLimitMetersPerS;   // speed limit on pit road
    double sideGripMetersPerS2;  // acceleration that the tyres hold across the car
    double northOffsetRadians;   // heading at the line
    double altitudeMeters;
    double hillMeters;  // half the difference of height around the lap
    std::vector<Corner> corners;
};

/**
 * The road: what a car finds at a distance from the start/finish line. Distances are in metres and
 * are taken around the lap, so any finite number is good.
 */
class Track {
public:
    explicit Track(TrackDescription description);

    /** A circuit of 4.6 km, about 95 s a lap. */
    static Track grandCircuit();

    /** A circuit of 1 km, some 22 s a lap, for tests that must see many laps. */
    static Track shortCircuit();

    const TrackDescription& description() const { return m_description; }
    double length() const { return m_description.lengthMeters; }

    /** Distance brought into 0 (included) to length() (excluded). */
    double around(double distance) const;

    /** Metres to drive forwards from `from` to `to`; 0 to length(). */
    double ahead(double from, double to) const { return around(to - from); }

    /** Turn of the road per metre, 1/m, positive to the left. */
    double curvature(double distance) const { return lookUp(m_curvature, distance); }

    /** Compass-like heading of the road, -pi to pi. */
    double heading(double distance) const;

    /** Metres above the line. */
    double height(double distance) const;

    /** Rise of the road per metre. */
    double slope(double distance) const;

    /** What the fastest car drives here on a flying lap, m/s. */
    double speed(double distance) const { return lookUp(m_speed, distance); }

    /** Time of a flying lap at exactly speed(), s. */
    double lapTime() const { return m_lapTime; }

    double pitEntry() const { return m_description.pitEntryPct * length(); }
    double pitExit() const { return m_description.pitExitPct * length(); }

    /** Where the stall of slot `slot` of `slots` lies. */
    double stall(int slot, int slots) const;

    /** Metres of pit road from entry to exit. */
    double pitLaneLength() const { return ahead(pitEntry(), pitExit()); }

private:
    double lookUp(const std::vector<double>& table, double distance) const;
    void layOutCorners();
    void workOutSpeeds();

    TrackDescription m_description;
    double m_step = 0.0;  // metres between two entries of the tables
    std::vector<double> m_curvature;
    std::vector<double> m_heading;
    std::vector<double> m_speed;
    double m_lapTime = 0.0;
};

}  // namespace simulator
