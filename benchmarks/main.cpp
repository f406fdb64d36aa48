// Measures what a tick costs, as ratios to other ways to do the same work in the same process.
//
//   rataip-bench [--check] [--plot FILE] [options of Google Benchmark]
//
// Prints one table: figure, measured, floor, verdict. With --check the exit status is 1 when a
// floor is missed; without a figure it is 2. --plot writes the plot of tick time over a race as an
// SVG file.

#include "benchmarks/allocations.h"
#include "benchmarks/figures.h"
#include "benchmarks/report.h"

#include <QCoreApplication>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace {

struct Options {
    bool check = false;
    std::string plotFile;
};

/** Removes our own options from `arguments`. */
Options takeOptions(std::vector<char*>& arguments) {
    Options options;
    std::vector<char*> rest;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        if (std::strcmp(arguments[i], "--check") == 0) {
            options.check = true;
        } else if (std::strcmp(arguments[i], "--plot") == 0 && i + 1 < arguments.size()) {
            options.plotFile = arguments[++i];
        } else {
            rest.push_back(arguments[i]);
        }
    }
    arguments = rest;
    return options;
}

/** Reports progress on the error stream, so that standard output is the table only. */
class Progress : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context& /*context*/) override { return true; }
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            std::fprintf(stderr, "measured: %s\n", run.run_name.function_name.c_str());
        }
    }
};

}  // namespace

int main(int argc, char** argv) {
    bench::keepFreedMemory();
    QCoreApplication application(argc, argv);
    std::vector<char*> arguments(argv, argv + argc);
    const Options options = takeOptions(arguments);
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) {
        return 2;
    }

    bench::Report report;
    bench::registerSampling(report);
    bench::registerLaps(report);
    bench::registerRace(report, options.plotFile);
    bench::registerSessionText(report);
    bench::registerClosing(report);
    bench::registerLink(report);

    Progress progress;
    benchmark::RunSpecifiedBenchmarks(&progress);
    benchmark::Shutdown();
    if (report.isEmpty()) {
        std::fputs("rataip-bench: no measurement bears such a name\n", stderr);
        return 2;
    }
    report.print();
    return options.check && !report.isPassed() ? 1 : 0;
}
