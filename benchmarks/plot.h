#pragma once

#include <string>
#include <vector>

namespace bench {

/** Tick times of a race in seconds, and their label. */
struct PlottedTicks {
    std::string name;
    std::vector<double> seconds;
};

/**
 * Writes an SVG file with tick time over the race, on a logarithmic scale: the median, the 99th
 * percentile and the worst of every stretch of the race. Reports a file that cannot be written on
 * the error stream.
 */
void writePlot(const std::string& file, int ticksPerLap, const std::vector<PlottedTicks>& races);

}  // namespace bench
