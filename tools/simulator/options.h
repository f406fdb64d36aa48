#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace simulator {

/** The sessions of a weekend. */
enum class SessionChoice { Testing, Practice, Qualify, Race, Weekend };

enum class TrackChoice { Grand, Short };

/** The options of a run, with their defaults. */
struct Options {
    int cars = 20;
    SessionChoice session = SessionChoice::Practice;
    TrackChoice track = TrackChoice::Grand;
    double sessionLength = 0.0;  // s, 0: the default of the session type
    int raceLaps = 0;            // 0: the default of the track
    bool replay = false;
    std::uint64_t seed = 1;

    double speed = 1.0;     // simulated seconds per second
    bool flatOut = false;   // as fast as possible
    int laps = 0;           // end after so many completed laps of the own car, 0: no end
    double duration = 0.0;  // end after so many simulated seconds, 0: no end
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

/** A command line that was read. */
struct CommandLine {
    enum class Action { Run, Help, Version, Refuse };

    Action action = Action::Run;
    Options options;
    std::string complaint;  // with Refuse: one sentence that says what is wrong
};

/** Reads the arguments after the program's name. Reports the first mistake. */
CommandLine readCommandLine(const std::vector<std::string>& arguments);

/** The text for --help. */
std::string helpText();

}  // namespace simulator
