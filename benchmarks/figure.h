#pragma once

#include "benchmarks/report.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <string>

namespace bench {

/**
 * Registers a figure: a class with `double round()`, which has one round of its measurement and
 * returns the seconds of the measured side, and `void report(Report&)`, called after the last
 * round. It is made when its turn comes, so that figures do not hold each other's memory.
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

}  // namespace bench
