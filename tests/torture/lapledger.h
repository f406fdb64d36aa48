#pragma once

#include "tests/support/drivenlaps.h"

#include <optional>
#include <string>
#include <vector>

namespace torture {

/** A lap with samples as a host got it. */
struct HandedLap {
    int car = 0;
    bool isOwnCar = false;
    long long firstTick = 0;  // of the session, as the samples say, behind the foreign ones
    long long lastTick = 0;
    bool completed = false;
    int foreignSamples = 0;  // before the session's tick falls for the last time
};

/** What became of the laps of one or more runs of the simulator. */
struct LapBalance {
    int driven = 0;       // that ended at the line or at the pits
    int handedOver = 0;   // of these
    int inPieces = 0;     // of these, handed over with other bounds, but whole
    int cutShort = 0;     // of these, ended while a fault kept the host from looking
    int lost = 0;         // of these, all others
    int twice = 0;        // handed over more than once
    int wrongEnd = 0;     // completed although cut short by the pits, or the reverse
    int carriedOver = 0;  // laps that begin with what was recorded behind the line before a fault
    int mixed = 0;        // laps with more samples of another run than that
    int neverDriven = 0;  // handed over as completed, but nobody drove them

    /** A line for each lap by which the books are not even: what was driven, seen and handed over.
     */
    std::vector<std::string> complaints;

    LapBalance& operator+=(const LapBalance& other);
    [[nodiscard]] bool isEven() const {
        return lost == 0 && twice == 0 && wrongEnd == 0 && mixed == 0 && neverDriven == 0;
    }
};

/**
 * The laps of one run of the simulator: those that were handed over, to be held against those that
 * were driven. A lap counts as lost when the host saw every tick around its end, from shortly
 * before it to the last of what the simulator says of it, and did not get it.
 */
class LapLedger {
public:
    /**
     * Whose laps have to begin and end where they were driven. The plugin keeps the session text's
     * results for ever, and a simulator that was started anew lists only those who have finished a
     * lap: until then the other cars have the lap numbers of an earlier run, and their laps end
     * where those change. Of such cars every sample has to be handed over, in whatever laps.
     */
    enum class Trust { AllCars, OwnCar };

    /** The host has taken the snapshot of this tick. `joins` when it took the one before, too. */
    void see(long long tick, bool joins);

    /**
     * A lap that the host got. One that reaches beyond the ticks seen so far is of an earlier run:
     * what was recorded behind the line outlives the connection.
     */
    void hand(const HandedLap& lap);
    [[nodiscard]] bool hasLaps() const { return !m_handed.empty(); }

    [[nodiscard]] LapBalance balance(const std::vector<testsupport::DrivenLap>& driven,
                                     Trust trust) const;

private:
    struct Window {
        long long from;
        long long to;

        [[nodiscard]] bool holds(long long first, long long last) const {
            return from <= first && last <= to;
        }
    };

    /** How far the laps of a car cover what it drove. */
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
