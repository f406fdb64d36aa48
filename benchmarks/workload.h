#pragma once

#include "irsdk/layout.h"

#include <array>
#include <cstddef>
#include <string>
#include <vector>

namespace bench {

inline constexpr int kCarCount = 64;
inline constexpr const char* kPerCarPrefix = "CarIdx";
inline constexpr int kOwnCar = 5;
inline constexpr int kOwnVariableCount = 300;
inline constexpr int kPerCarVariableCount = 36;
inline constexpr int kChangingPerCarVariableCount = 13;
inline constexpr double kTicksPerSecond = 60.0;

/** What the session text says of one car's race. */
struct CarResult {
    int lapsComplete = 0;
    double lastTime = -1.0;  // seconds

    bool operator==(const CarResult&) const = default;
};

using Results = std::array<CarResult, kCarCount>;

/**
 * The fixed work of every measurement: a race of 64 cars as a simulator publishes it. It has 300
 * variables of the own car, 36 arrays with one element per car, of which 13 change in every tick
 * and the others rarely, and a session text of about 120 kB. It depends only on the tick's number,
 * so every run gets the same data.
 */
class Workload {
public:
    /** A race whose fastest car needs `ticksPerLap` ticks for a lap. */
    explicit Workload(int ticksPerLap);

    /** A header with the fields that a reader of snapshots needs. */
    [[nodiscard]] irsdk_header header() const;
    [[nodiscard]] const std::vector<irsdk_varHeader>& table() const { return m_table; }
    [[nodiscard]] int bufferLength() const { return m_bufferLength; }

    /** The snapshot of a tick, bufferLength() bytes. */
    [[nodiscard]] std::vector<char> snapshot(int tick) const;
    void fill(char* snapshot, int tick) const;

    /** The results in the text at a tick, which come a second after the line is crossed. */
    [[nodiscard]] Results results(int tick) const;

    /** A session text with these results. */
    [[nodiscard]] std::string sessionText(const Results& results) const;

private:
    void addVariable(const std::string& name, irsdk_VarType type, int count,
                     const std::string& unit);
    void addOwnVariables();
    void addPerCarVariables();
    [[nodiscard]] const irsdk_varHeader& variable(const std::string& name) const;

    [[nodiscard]] double distance(int car, double tick) const;  // laps
    [[nodiscard]] double ticksPerLap(int car) const;

    void fillOwnClock(char* snapshot, int tick) const;

    int m_ticksPerLap;
    int m_bufferLength = 0;
    std::vector<irsdk_varHeader> m_table;
    std::vector<char> m_start;  // a snapshot with the values that never change
};

}  // namespace bench
