#pragma once

#include "benchmarks/report.h"

#include <string>

namespace bench {

/**
 * The measurements, each a benchmark of its own that adds its figures to `report` when it has run.
 * `report` must outlive the run.
 */
void registerSampling(Report& report);
void registerLaps(Report& report);
void registerSessionText(Report& report);
void registerClosing(Report& report);
void registerLink(Report& report);

/** `plotFile` receives the plot of tick time over the race; nothing is written when it is empty. */
void registerRace(Report& report, const std::string& plotFile);

}  // namespace bench
