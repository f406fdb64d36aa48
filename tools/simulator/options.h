#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace simulator {

/** Which sessions a weekend has. */
enum class SessionChoice { Testing, Practice, Qualify, Race, Weekend };

enum class TrackChoice { Grand, Short };

/** What the user asked for; the defaults are those of a start without options. */
struct Options {
    int cars = 20;
    SessionChoice session = SessionChoice::Practice;
    TrackChoice track = TrackChoice::Grand;
    double sessionLength = 0.0;  // s, 0 leaves it to the kind of session
    int raceLaps = 0;            // 0 leaves it to the track
    bool replay = false;
    std::uint64_t seed = 1;

    double speed = 1.0;     // simulated seconds in a second
    bool flatOut = false;   // as fast as the machine can
    int laps = 0;           // completed laps of the own car that end the run, 0 for no end
    double duration = 0.0;  // simulated seconds that end the run, 0 for no end
    bool lockstep = false;
    bool commands = false;
    bool quiet = false;
    std::string log;

    int bufferCount = 3;
    int extraVariables = 0;
    bool shuffleVariables = false;
    int padBuffer = 0;  // bytes
    bool sessionInfoEveryTick = false;

    static constexpr int kMostCars = 64;
};

/** What a command line asks for. */
struct CommandLine {
    enum class Action { Run, Help, Version, Refuse };

    Action action = Action::Run;
    Options options;
    std::string complaint;  // with Refuse: one sentence on what is wrong
};

/** Reads the arguments after the program's name. The first fault found is the one complained of. */
CommandLine readCommandLine(const std::vector<std::string>& arguments);

/** The text for --help. */
std::string helpText();

}  // namespace simulator
