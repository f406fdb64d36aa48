#pragma once

#include <QtGlobal>

#include <optional>
#include <vector>

class TStringTree;

/** What the results of a session say of one car. */
struct CarResult {
    qint32 lap;         // the lap that the car is on: one more than it has completed
    float lastLapTime;  // seconds
};

/**
 * The results of one session, by car, read from the tree when it has changed.
 *
 * The simulator lists them by position; a car that stands in two positions has the better one.
 * Positions from 1 to the number of car slots are read. A car index that is no number is 0, and so
 * is a count of laps.
 */
class ResultsTable {
public:
    /** Reads the results of session `session` below `tree`, the session text's root. */
    void refresh(const TStringTree& tree, int session, int carCount);

    /** Nothing for a car without a result; `car` is below the last refresh's `carCount`. */
    [[nodiscard]] std::optional<CarResult> result(int car) const;

private:
    /** What the table was made from. */
    struct Origin {
        quint64 revision;
        int session;
        int carCount;

        bool operator==(const Origin&) const = default;
    };

    void readPositions(const TStringTree& positions, int count);
    void readPosition(const TStringTree& position);

    std::optional<Origin> m_origin;
    std::vector<std::optional<CarResult>> m_results;
};
