#include "tests/torture/copies.h"
#include "tests/torture/faults.h"
#include "tests/torture/host.h"
#include "tests/torture/longdrive.h"
#include "tests/torture/options.h"
#include "tests/torture/table.h"

#include <QCoreApplication>
#include <QLoggingCategory>

#include <chrono>
#include <cstdio>

namespace {

using torture::Options;
using torture::Table;
using Clock = std::chrono::steady_clock;

enum ExitStatus { kNothingLost = 0, kSomethingLost = 1, kBadStart = 2 };

constexpr long long kCopiesInTenMinutes = 5'000'000;
constexpr long long kTenMinutes = 600;  // s

long long copiesWanted(const Options& options) {
    return options.copies >= 0 ? options.copies
                               : kCopiesInTenMinutes * options.duration.count() / kTenMinutes;
}

void injectFaults(const Options& options, torture::Host& host, Table& table) {
    const auto start = Clock::now();
    const long long wanted = copiesWanted(options);
    torture::CopyTest copies;
    copies.run(wanted);
    copies.addTo(table, wanted);

    torture::FaultTest faults(options, host);
    faults.run(start + options.duration);
    faults.addTo(table);
    table.add("time in all",
              torture::number(std::chrono::duration<double>(Clock::now() - start).count(), 0, "s"));
}

void driveOn(const Options& options, torture::Host& host, Table& table) {
    torture::LongDrive drive(options, host);
    drive.run();
    drive.addTo(table);
}

}  // namespace

int main(int argc, char* argv[]) {
    const QCoreApplication application(argc, argv);
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (torture::asksForHelp(arguments)) {
        std::fputs(torture::helpText(), stdout);
        return kNothingLost;
    }
    std::optional<Options> options = torture::readOptions(arguments);
    if (!options) {
        std::fputs("rataip-torture: these options make no sense; see --help.\n", stderr);
        return kBadStart;
    }
    if (options->plugin.empty()) {
        options->plugin = PLUGIN_MODULE;
    }
    // The plugin's debug lines about single laps would hide everything else.
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
    torture::Host host(QString::fromStdString(options->plugin));
    if (!host.isReady()) {
        std::fprintf(stderr, "rataip-torture: %s\n", qPrintable(host.problem()));
        return kBadStart;
    }
    Table table;
    if (options->driveHours > 0) {
        driveOn(*options, host, table);
    } else {
        injectFaults(*options, host, table);
    }
    table.print();
    return table.isPassed() ? kNothingLost : kSomethingLost;
}
