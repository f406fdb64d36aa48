#pragma once

#include "benchmarks/report.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <string>

namespace bench {

/**
 * Registers a figure: a class with `double round()`, which does one round of its measurement and
 * returns the seconds of the measured side, and `void report(Report&)`, called after the last
 * round. It is created when its turn comes, so that no figure holds memory while another runs.
 */
template <typename Figure, typename... Arguments>
void registerFigure(Report& report, const std::string& name, int rounds, Arguments... arguments) {
    benchmark::RegisterBenchmark(name.c_str(),
                                 [&report, arguments...](benchmark::State& state) {
                                     const auto figure = std::make_unique<Figure>(arguments...);
                                     while (state.KeepRunning()) {
                                         state.SetIterationTime(figure->round());
                                     }
                                     figure->report(report);
                                 })
        ->Iterations(rounds)
        ->UseManualTime()
        ->Unit(benchmark::kMicrosecond);
}

/**
 * The measurements. Each is a benchmark of its own and adds its figures to `report` when it has
 * run. `report` must outlive the run.
 */
void registerSampling(Report& report);
void registerLaps(Report& report);
void registerSessionText(Report& report);
void registerClosing(Report& report);
void registerLink(Report& report);

/** Writes the plot of tick time over the race to `plotFile`, unless that is empty. */
void registerRace(Report& report, const std::string& plotFile);

}  // namespace bench
