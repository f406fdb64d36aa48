#pragma once

#include "tools/simulator/laprecord.h"

#include <fstream>
#include <string>
#include <vector>

namespace simulator {

/**
 * A file of the driven laps with a line per lap and columns separated by tabs. The first line has
 * the column names and begins with "#":
 *
 *   car       slot of the car
 *   lap       number of the lap, 0 up to the first line
 *   kind      out, flying or in
 *   seconds   official time with four decimals, -1.0000 without a time
 *   float     the published 32-bit float, with enough digits to read it back
 *   session   number of the session
 *   start     tick in which the lap began
 *   finish    tick in which it ended
 *   complete  yes when it ended at the line, else no
 */
class LapLog {
public:
    /** Opens `path` for a new log. Returns false on failure. */
    [[nodiscard]] bool open(const std::string& path);

    /** Adds a line for each lap. Does nothing without an open file. */
    void add(const std::vector<LapRecord>& laps);

    /** The line for `lap` without its end. */
    static std::string line(const LapRecord& lap);

private:
    std::ofstream m_file;
};

/** The name of `kind` in the log and on the screen. */
const char* lapKindText(LapKind kind);

}  // namespace simulator
