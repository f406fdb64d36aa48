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

bool readSeconds(const std::string& text, std::chrono::seconds& seconds) {
    std::int64_t count = 0;
    const bool good = readWhole<std::int64_t>(text, count, 1);
    seconds = std::chrono::seconds(count);
    return good;
}

bool setOption(Options& options, const std::string& name, const std::string& value) {
    if (name == "--duration") {
        return readSeconds(value, options.duration);
    }
    if (name == "--patience") {
        return readSeconds(value, options.patience);
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
           "                    pause, for half an hour at most (as many of 5,000,000 as S\n"
           "                    is of 600 seconds)\n"
           "  --kills N         kill the simulator N times while a buffer is half written,\n"
           "                    however long that takes (as often as there is time)\n"
           "  --patience S      seconds that a reconnection may take (1)\n"
           "  --seed N          another order and other moments of the faults (1)\n"
           "  --drive-hours H   instead of faults: H simulated hours of 64 cars, as fast as the\n"
           "                    plugin takes them\n"
           "  --plugin FILE     the plugin (the one of this build)\n"
           "  --help            print this text\n"
           "\n"
           "Copies are made first and count towards the duration. It prints one table. Exit\n"
           "status: 0 nothing was lost, 1 something was, 2 the arguments make no sense or the\n"
           "run could not start.\n";
}

}  // namespace torture
