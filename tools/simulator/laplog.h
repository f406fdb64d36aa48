#pragma once

#include "tools/simulator/laprecord.h"

#include <fstream>
#include <string>
#include <vector>

namespace simulator {

/**
 * The file of laps as they were driven, one line each, columns separated by tabs, a first line of
 * column names that begins with "#":
 *
 *   car       slot of the car
 *   lap       number of the lap, 0 up to the first line
 *   kind      out, flying or in
 *   seconds   official time with four decimals; -1.0000 when there is none
 *   float     the same as the 32-bit float that is published, written so that it reads back
 *   session   number of the session
 *   start     tick in which the lap began
 *   finish    tick in which it ended
 *   complete  yes when it ended at the line, else no
 */
class LapLog {
public:
    /** Opens `path` for a new log; false when that cannot be done. */
    [[nodiscard]] bool open(const std::string& path);

    /** Adds a line for each lap; does nothing when no file is open. */
    void add(const std::vector<LapRecord>& laps);

    /** The line for `lap`, without its end. */
    static std::string line(const LapRecord& lap);

private:
    std::ofstream m_file;
};

/** The word for `kind` in the log and on the screen. */
const char* lapKindText(LapKind kind);

}  // namespace simulator
