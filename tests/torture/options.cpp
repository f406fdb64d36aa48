#include "tests/torture/options.h"

#include <algorithm>
#include <charconv>

namespace torture {

namespace {

template <typename Number>
bool readWhole(const std::string& text, Number& number, Number least) {
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number);
    return result.ec == std::errc() && result.ptr == end && number >= least;
}

bool setOption(Options& options, const std::string& name, const std::string& value) {
    if (name == "--duration") {
        std::int64_t seconds = 0;
        const bool good = readWhole<std::int64_t>(value, seconds, 1);
        options.duration = std::chrono::seconds(seconds);
        return good;
    }
    if (name == "--kills") {
        return readWhole(value, options.kills, 0);
    }
    if (name == "--copies") {
        return readWhole<long long>(value, options.copies, 0);
    }
    if (name == "--seed") {
        return readWhole<std::uint32_t>(value, options.seed, 0);
    }
    if (name == "--drive-hours") {
        return readWhole(value, options.driveHours, 1);
    }
    if (name == "--plugin") {
        options.plugin = value;
        return !value.empty();
    }
    return false;
}

}  // namespace

std::optional<Options> readOptions(const std::vector<std::string>& arguments) {
    Options options;
    for (std::size_t i = 0; i < arguments.size(); i += 2) {
        if (i + 1 == arguments.size() || !setOption(options, arguments[i], arguments[i + 1])) {
            return std::nullopt;
        }
    }
    return options;
}

bool asksForHelp(const std::vector<std::string>& arguments) {
    return std::any_of(arguments.begin(), arguments.end(), [](const std::string& argument) {
        return argument == "--help" || argument == "-h";
    });
}

const char* helpText() {
    return "rataip-torture: runs the stand-in simulator and a host with the plugin, does to\n"
           "them what no user should, and counts what is lost. No other simulator may be\n"
           "publishing meanwhile.\n"
           "\n"
           "Usage: rataip-torture [OPTION VALUE]...\n"
           "\n"
           "  --duration S      go on for S seconds (600)\n"
           "  --copies N        copy N snapshots out of a ring that is overwritten without\n"
           "                    pause (as many of 5,000,000 as S is of 600 seconds)\n"
           "  --kills N         kill the simulator N times (as often as there is time)\n"
           "  --seed N          another order and other moments of the faults (1)\n"
           "  --drive-hours H   instead of faults: H simulated hours of 64 cars, as fast as the\n"
           "                    plugin takes them\n"
           "  --plugin FILE     the plugin (the one of this build)\n"
           "  --help            print this text\n"
           "\n"
           "Copies and kills are made however long that takes. It prints one table. Exit status: 0 "
           "nothing was lost, 1 something was, 2 the\n"
           "arguments make no sense or the run could not start.\n";
}

}  // namespace torture
