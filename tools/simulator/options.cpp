#include "tools/simulator/options.h"

#include "tools/simulator/text.h"

#include <array>
#include <functional>
#include <limits>
#include <optional>
#include <string_view>

namespace simulator {

namespace {

/** Stores a value in the options. Returns false when the value is invalid. */
using Setter = bool (*)(Options&, const std::string&);

struct OptionRule {
    const char* name;
    const char* argument;  // name of its value in the help, null for a switch
    const char* wanted;    // description of valid values, null for a switch
    const char* help;      // lines after the first begin with a line break
    Setter set;
};

template <typename Whole>
bool setWhole(Whole& target, const std::string& text, long long least, long long most) {
    long long value = 0;
    if (!readInteger(text, value) || value < least || value > most) {
        return false;
    }
    target = static_cast<Whole>(value);
    return true;
}

bool setPositive(double& target, const std::string& text, double most) {
    double value = 0.0;
    if (!readNumber(text, value) || value <= 0.0 || value > most) {
        return false;
    }
    target = value;
    return true;
}

bool setSession(Options& options, const std::string& text) {
    struct Name {
        std::string_view text;
        SessionChoice choice;
    };
    constexpr std::array<Name, 5> kNames = {{{"testing", SessionChoice::Testing},
                                             {"practice", SessionChoice::Practice},
                                             {"qualify", SessionChoice::Qualify},
                                             {"race", SessionChoice::Race},
                                             {"weekend", SessionChoice::Weekend}}};
    for (const Name& name : kNames) {
        if (name.text == text) {
            options.session = name.choice;
            return true;
        }
    }
    return false;
}

bool setTrack(Options& options, const std::string& text) {
    if (text != "grand" && text != "short") {
        return false;
    }
    options.track = text == "grand" ? TrackChoice::Grand : TrackChoice::Short;
    return true;
}

bool setSpeed(Options& options, const std::string& text) {
    constexpr double kFastest = 10000.0;
    options.flatOut = text == "max";
    return options.flatOut || setPositive(options.speed, text, kFastest);
}

constexpr double kLongestSeconds = 1e7;
constexpr int kMostLaps = 1000000;
constexpr int kMostExtraVariables = 1000;
constexpr int kMostPadding = 1 << 20;

constexpr std::array kRules = {
    OptionRule{"--cars", "N", "a whole number from 1 to 64",
               "slots in use, the own car included (20)",
               [](Options& o, const std::string& v) {
                   return setWhole(o.cars, v, 1, Options::kMostCars);
               }},
    OptionRule{"--session", "KIND", "testing, practice, qualify, race or weekend",
               "testing, practice (the default), qualify, race, or weekend:\n"
               "practice, qualifying, warm-up and race one after another",
               setSession},
    OptionRule{"--track", "NAME", "grand or short",
               "grand (the default): 4.6 km, about 95 s a lap; short: 1 km, some\n"
               "22 s a lap, for tests",
               setTrack},
    OptionRule{"--session-length", "S", "a number of seconds above 0",
               "simulated seconds of each session; without it testing, practice and\n"
               "qualifying alone have no end",
               [](Options& o, const std::string& v) {
                   return setPositive(o.sessionLength, v, kLongestSeconds);
               }},
    OptionRule{
        "--race-laps", "N", "a whole number above 0", "laps of a race (10, short track 20)",
        [](Options& o, const std::string& v) { return setWhole(o.raceLaps, v, 1, kMostLaps); }},
    OptionRule{"--replay", nullptr, nullptr,
               "play a replay: now and then paused or at another speed",
               [](Options& o, const std::string&) { return o.replay = true; }},
    OptionRule{"--seed", "N", "a whole number from 0 to 9223372036854775807",
               "drivers, pace, times, ids: all follow from it (1)",
               [](Options& o, const std::string& v) {
                   return setWhole(o.seed, v, 0, std::numeric_limits<long long>::max());
               }},
    OptionRule{"--speed", "X", "a number above 0 and up to 10000, or max",
               "simulated seconds in a second (1), or max: as fast as it goes", setSpeed},
    OptionRule{"--laps", "N", "a whole number above 0",
               "end 3 s after the own car has finished N laps, out laps included",
               [](Options& o, const std::string& v) { return setWhole(o.laps, v, 1, kMostLaps); }},
    OptionRule{"--duration", "S", "a number of seconds above 0", "end after S simulated seconds",
               [](Options& o, const std::string& v) {
                   return setPositive(o.duration, v, kLongestSeconds);
               }},
    OptionRule{"--log", "FILE", "the name of a file", "write each lap as it was driven into FILE",
               [](Options& o, const std::string& v) {
                   o.log = v;
                   return !v.empty();
               }},
    OptionRule{"--quiet", nullptr, nullptr, "print nothing, no answers to commands either",
               [](Options& o, const std::string&) { return o.quiet = true; }},
    OptionRule{"--lockstep", nullptr, nullptr,
               "publish only when told on standard input (see below)",
               [](Options& o, const std::string&) { return o.lockstep = true; }},
    OptionRule{"--commands", nullptr, nullptr,
               "take commands on standard input while running by the clock",
               [](Options& o, const std::string&) { return o.commands = true; }},
    OptionRule{"--buffer-count", "N", "a whole number from 1 to 4",
               "buffers of the ring (3); a real simulator has 3 or 4",
               [](Options& o, const std::string& v) { return setWhole(o.bufferCount, v, 1, 4); }},
    OptionRule{"--extra-vars", "N", "a whole number from 0 to 1000",
               "append N variables; the others keep their places in the table",
               [](Options& o, const std::string& v) {
                   return setWhole(o.extraVariables, v, 0, kMostExtraVariables);
               }},
    OptionRule{"--shuffle-vars", nullptr, nullptr, "put the table of variables in another order",
               [](Options& o, const std::string&) { return o.shuffleVariables = true; }},
    OptionRule{
        "--pad-buffer", "BYTES", "a whole number from 0 to 1048576",
        "leave BYTES unused before the first variable and between the\n"
        "buffers, so that lengths and offsets differ",
        [](Options& o, const std::string& v) { return setWhole(o.padBuffer, v, 0, kMostPadding); }},
    OptionRule{"--session-info-every-tick", nullptr, nullptr,
               "rewrite the session text in every tick",
               [](Options& o, const std::string&) { return o.sessionInfoEveryTick = true; }},
};

CommandLine refused(std::string complaint) {
    CommandLine line;
    line.action = CommandLine::Action::Refuse;
    line.complaint = std::move(complaint);
    return line;
}

CommandLine asked(CommandLine::Action action) {
    CommandLine line;
    line.action = action;
    return line;
}

const OptionRule* ruleFor(const std::string& name) {
    for (const OptionRule& rule : kRules) {
        if (name == rule.name) {
            return &rule;
        }
    }
    return nullptr;
}

std::string clash(const Options& options) {
    if (options.lockstep && (options.flatOut || options.speed != 1.0)) {
        return "--lockstep and --speed exclude each other: in lock step there is no clock.";
    }
    return {};
}

// The column of the explanations.
constexpr std::size_t kHelpColumn = 30;

std::string helpLines(const std::string& left, std::string_view explanation) {
    std::string text(2, ' ');
    text += left;
    while (true) {
        const std::size_t end = std::min(explanation.find('\n'), explanation.size());
        const std::size_t column = text.size() - (text.rfind('\n') + 1);
        text.append(column < kHelpColumn ? kHelpColumn - column : 1, ' ');
        text.append(explanation.substr(0, end));
        text += '\n';
        if (end == explanation.size()) {
            return text;
        }
        explanation.remove_prefix(end + 1);
    }
}

std::string nameAndArgument(const OptionRule& rule) {
    std::string text = rule.name;
    if (rule.argument != nullptr) {
        text += ' ';
        text += rule.argument;
    }
    return text;
}

}  // namespace

CommandLine readCommandLine(const std::vector<std::string>& arguments) {
    CommandLine line;
    for (std::size_t index = 0; index < arguments.size(); ++index) {
        const std::string& argument = arguments[index];
        if (argument == "--help" || argument == "-h") {
            return asked(CommandLine::Action::Help);
        }
        if (argument == "--version") {
            return asked(CommandLine::Action::Version);
        }
        const std::size_t equals = argument.find('=');
        const std::string name = argument.substr(0, equals);
        const OptionRule* rule = ruleFor(name);
        if (rule == nullptr) {
            return refused("There is no option \"" + argument + "\"; --help lists all.");
        }
        std::optional<std::string> value;
        if (equals != std::string::npos) {
            value = argument.substr(equals + 1);
        }
        if (rule->argument == nullptr) {
            if (value) {
                return refused(name + " takes no value.");
            }
            rule->set(line.options, "");
            continue;
        }
        if (!value && index + 1 < arguments.size()) {
            value = arguments[++index];
        }
        if (!value) {
            return refused(name + " needs a value: " + rule->wanted + ".");
        }
        if (!rule->set(line.options, *value)) {
            return refused(name + " needs " + rule->wanted + ", not \"" + *value + "\".");
        }
    }
    if (std::string complaint = clash(line.options); !complaint.empty()) {
        return refused(std::move(complaint));
    }
    return line;
}

std::string helpText() {
    std::string text =
        "rataip-simulator: a stand-in for the racing simulator. It publishes the same\n"
        "shared-memory block, event and session text from a model of a race weekend, so\n"
        "that a live plugin can be tried and tested without the real one.\n"
        "\n"
        "Usage: rataip-simulator [OPTION]...\n"
        "\n"
        "Options (usual value in brackets):\n";
    for (const OptionRule& rule : kRules) {
        text += helpLines(nameAndArgument(rule), rule.help);
    }
    text += helpLines("--help", "print this text");
    text += helpLines("--version", "print the version");
    text +=
        "\n"
        "Commands on standard input, one a line, with --lockstep or --commands:\n"
        "  (empty line) or step        publish the next tick (lock step only)\n"
        "  step N                      publish the next N ticks (lock step only)\n"
        "  stall SECONDS               publish nothing for SECONDS of real time\n"
        "  status off, status on       clear or set the status bit; ticks go on\n"
        "  quit                        end in order\n"
        "Each is answered by one line: \"tick N\" after a step, else \"ok\", or\n"
        "\"unknown command: ...\". In lock step the end of the input ends the run too.\n"
        "\n"
        "Ctrl-C ends the run in order: the status bit is cleared and the objects are\n"
        "removed. Exit status: 0 ended in order, 1 a bad option, 2 could not start (another\n"
        "simulator is publishing, or the log cannot be written).\n";
    return text;
}

}  // namespace simulator
