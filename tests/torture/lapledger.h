#pragma once

#include "tests/support/drivenlaps.h"

#include <optional>
#include <string>
#include <vector>

namespace torture {

/** A lap with samples that a host got. */
struct HandedLap {
    int car = 0;
    bool isOwnCar = false;
    long long firstTick = 0;  // of the session, from the samples after the foreign ones
    long long lastTick = 0;
    bool completed = false;
    int foreignSamples = 0;  // before the session's tick falls for the last time
};

/** What became of the laps of one or more runs of the simulator. */
struct LapBalance {
    int driven = 0;       // ended at the line or in the pits
    int handedOver = 0;   // of these
    int inPieces = 0;     // of these, completely handed over, but with other bounds
    int cutShort = 0;     // of these, ended while a fault kept the host from looking
    int lost = 0;         // of these, all others
    int twice = 0;        // handed over more than once
    int wrongEnd = 0;     // completed although cut short by the pits, or the reverse
    int carriedOver = 0;  // begin with samples recorded after the line before a fault
    int mixed = 0;        // have more samples of another run than that
    int neverDriven = 0;  // handed over as completed, but not driven

    /** A line for each lap that is missing or wrong: what was driven, seen and handed over. */
    std::vector<std::string> complaints;

    LapBalance& operator+=(const LapBalance& other);
    [[nodiscard]] bool isFlawless() const {
        return lost == 0 && twice == 0 && wrongEnd == 0 && mixed == 0 && neverDriven == 0;
    }
};

/**
 * Compares the laps that were handed over in one run of the simulator with those that were driven.
 * A lap counts as lost if the host did not get it although it saw every tick around its end, from
 * shortly before it until the simulator had published all about it.
 */
class LapLedger {
public:
    /**
     * The cars whose laps must begin and end where they were driven. The plugin keeps the results
     * of the session text, and a restarted simulator lists only cars that have finished a lap:
     * until then the other cars have the lap numbers of an earlier run, and their laps end where
     * those change. For such cars every sample must be handed over, in any lap.
     */
    enum class Trust { AllCars, OwnCar };

    /** The host has taken the snapshot of this tick; `joins` if also the one before. */
    void see(long long tick, bool joins);

    /**
     * Adds a lap that the host got. One with later ticks than those seen so far is of an earlier
     * run: samples recorded after the line outlive the connection.
     */
    void hand(const HandedLap& lap);
    [[nodiscard]] bool hasLaps() const { return !m_handed.empty(); }

    [[nodiscard]] LapBalance balance(const std::vector<testsupport::DrivenLap>& driven,
                                     Trust trust) const;

private:
    struct Window {
        long long from;
        long long to;

        [[nodiscard]] bool contains(long long first, long long last) const {
            return from <= first && last <= to;
        }
    };

    /** How much of a driven lap the car's handed over laps cover. */
    enum class Pieces { Whole, OpenAtTheEnd, WithAGap };

    [[nodiscard]] std::optional<Window> windowOf(const testsupport::DrivenLap& lap) const;
    [[nodiscard]] bool wasSeen(const HandedLap& lap) const;
    [[nodiscard]] std::vector<HandedLap> handedFor(const testsupport::DrivenLap& lap) const;
    [[nodiscard]] bool isOwnCar(int car) const;
    [[nodiscard]] Pieces piecesOf(const testsupport::DrivenLap& lap, const Window& seen) const;
    [[nodiscard]] std::string complaint(const char* what, const std::string& lap, int car) const;

    std::vector<Window> m_windows;
    std::vector<HandedLap> m_handed;
    int m_ofEarlierRuns = 0;
};

}  // namespace torture
