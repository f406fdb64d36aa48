#include "tools/simulator/options.h"

#include <gtest/gtest.h>

#include <iterator>
#include <sstream>

using namespace simulator;
using Action = CommandLine::Action;

namespace {

std::vector<std::string> wordsOf(const std::string& text) {
    std::istringstream words(text);
    return {std::istream_iterator<std::string>(words), std::istream_iterator<std::string>()};
}

std::string complaintOf(const std::vector<std::string>& arguments) {
    const CommandLine line = readCommandLine(arguments);
    EXPECT_EQ(line.action, Action::Refuse);
    return line.complaint;
}

}  // namespace

TEST(Options, HaveDefaultsThatRun) {
    const CommandLine line = readCommandLine({});
    EXPECT_EQ(line.action, Action::Run);
    EXPECT_EQ(line.options.cars, 20);
    EXPECT_EQ(line.options.speed, 1.0);
    EXPECT_EQ(line.options.session, SessionChoice::Practice);
    EXPECT_EQ(line.options.bufferCount, 3);
    EXPECT_EQ(line.options.seed, 1U);
}

TEST(Options, TakeAllTheirValues) {
    const CommandLine line = readCommandLine(
        wordsOf("--cars 64 --session race --track short --session-length 90.5 --race-laps 12 "
                "--replay --seed 77 --speed 20 --laps 4 --duration 600 --log laps.tsv --quiet "
                "--commands --buffer-count 4 --extra-vars 5 --shuffle-vars --pad-buffer 100 "
                "--session-info-every-tick"));
    ASSERT_EQ(line.action, Action::Run) << line.complaint;
    const Options& options = line.options;
    EXPECT_EQ(options.cars, 64);
    EXPECT_EQ(options.session, SessionChoice::Race);
    EXPECT_EQ(options.track, TrackChoice::Short);
    EXPECT_EQ(options.sessionLength, 90.5);
    EXPECT_EQ(options.raceLaps, 12);
    EXPECT_TRUE(options.replay);
    EXPECT_EQ(options.seed, 77U);
    EXPECT_EQ(options.speed, 20.0);
    EXPECT_FALSE(options.flatOut);
    EXPECT_EQ(options.laps, 4);
    EXPECT_EQ(options.duration, 600.0);
    EXPECT_EQ(options.log, "laps.tsv");
    EXPECT_TRUE(options.quiet);
    EXPECT_TRUE(options.commands);
    EXPECT_EQ(options.bufferCount, 4);
    EXPECT_EQ(options.extraVariables, 5);
    EXPECT_TRUE(options.shuffleVariables);
    EXPECT_EQ(options.padBuffer, 100);
    EXPECT_TRUE(options.sessionInfoEveryTick);
}

TEST(Options, TakeAValueAfterAnEqualsSignToo) {
    const CommandLine line = readCommandLine({"--cars=3", "--speed=max", "--log=a=b"});
    ASSERT_EQ(line.action, Action::Run) << line.complaint;
    EXPECT_EQ(line.options.cars, 3);
    EXPECT_TRUE(line.options.flatOut);
    EXPECT_EQ(line.options.log, "a=b");
}

TEST(Options, TakeTheLastOfSeveralValues) {
    const CommandLine line = readCommandLine({"--speed", "max", "--speed", "2"});
    EXPECT_FALSE(line.options.flatOut);
    EXPECT_EQ(line.options.speed, 2.0);
}

TEST(Options, KnowEachKindOfSessionAndTrack) {
    const std::pair<const char*, SessionChoice> kinds[] = {{"testing", SessionChoice::Testing},
                                                           {"practice", SessionChoice::Practice},
                                                           {"qualify", SessionChoice::Qualify},
                                                           {"race", SessionChoice::Race},
                                                           {"weekend", SessionChoice::Weekend}};
    for (const auto& [text, choice] : kinds) {
        EXPECT_EQ(readCommandLine({"--session", text}).options.session, choice);
    }
    EXPECT_EQ(readCommandLine({"--track", "grand"}).options.track, TrackChoice::Grand);
}

TEST(Options, RefuseWhatTheyDoNotKnow) {
    EXPECT_EQ(complaintOf({"--frob"}), "There is no option \"--frob\"; --help lists all.");
    EXPECT_EQ(complaintOf({"--frob=1"}), "There is no option \"--frob=1\"; --help lists all.");
    EXPECT_EQ(complaintOf({"plain"}), "There is no option \"plain\"; --help lists all.");
    EXPECT_EQ(complaintOf({""}), "There is no option \"\"; --help lists all.");
}

TEST(Options, SayWhatIsValidWhenAValueIsNot) {
    const std::pair<const char*, std::vector<const char*>> cases[] = {
        {"--cars", {"0", "65", "-1", "x", "3.5", "", "99999999999999999999"}},
        {"--session", {"Race", "nap", ""}},
        {"--track", {"long", ""}},
        {"--session-length", {"0", "-5", "x", "nan", "inf"}},
        {"--race-laps", {"0", "-2", "2.5"}},
        {"--seed", {"-1", "x", "1e3"}},
        {"--speed", {"0", "-1", "fast", "nan", "10001"}},
        {"--laps", {"0", "x"}},
        {"--duration", {"0", "-1", "x", "inf"}},
        {"--log", {""}},
        {"--buffer-count", {"0", "5", "x"}},
        {"--extra-vars", {"-1", "1001", "x"}},
        {"--pad-buffer", {"-1", "1048577", "x"}},
    };
    for (const auto& [name, values] : cases) {
        for (const char* value : values) {
            const std::string complaint = complaintOf({name, value});
            EXPECT_EQ(complaint.rfind(std::string(name) + " needs ", 0), 0U) << complaint;
            EXPECT_NE(complaint.find(std::string(", not \"") + value + "\"."), std::string::npos)
                << complaint;
        }
        const std::string missing = complaintOf({name});
        EXPECT_EQ(missing.rfind(std::string(name) + " needs a value: ", 0), 0U) << missing;
    }
}

TEST(Options, RefuseAValueForASwitch) {
    for (const char* name : {"--replay", "--quiet", "--lockstep", "--commands", "--shuffle-vars",
                             "--session-info-every-tick"}) {
        EXPECT_EQ(complaintOf({std::string(name) + "=yes"}),
                  std::string(name) + " takes no value.");
    }
}

TEST(Options, RefuseASpeedInLockStep) {
    EXPECT_NE(complaintOf({"--lockstep", "--speed", "2"}).find("exclude"), std::string::npos);
    EXPECT_NE(complaintOf({"--speed=max", "--lockstep"}).find("exclude"), std::string::npos);
    EXPECT_EQ(readCommandLine({"--lockstep"}).action, Action::Run);
}

TEST(Options, AskForHelpAndVersionWhateverElseIsThere) {
    EXPECT_EQ(readCommandLine({"--cars", "3", "--help"}).action, Action::Help);
    EXPECT_EQ(readCommandLine({"-h"}).action, Action::Help);
    EXPECT_EQ(readCommandLine({"--version"}).action, Action::Version);
}

TEST(Options, AreAllExplainedInTheHelp) {
    const std::string help = helpText();
    for (const char* name : {"--cars N",
                             "--session KIND",
                             "--track NAME",
                             "--session-length S",
                             "--race-laps N",
                             "--replay",
                             "--seed N",
                             "--speed X",
                             "--laps N",
                             "--duration S",
                             "--log FILE",
                             "--quiet",
                             "--lockstep",
                             "--commands",
                             "--buffer-count N",
                             "--extra-vars N",
                             "--shuffle-vars",
                             "--pad-buffer BYTES",
                             "--session-info-every-tick",
                             "--help",
                             "--version",
                             "stall SECONDS",
                             "status off",
                             "quit",
                             "Exit status"}) {
        EXPECT_NE(help.find(name), std::string::npos) << name;
    }
    for (std::size_t start = 0; start < help.size();) {
        const std::size_t end = help.find('\n', start);
        EXPECT_LE(end - start, 100U) << help.substr(start, end - start);
        start = end + 1;
    }
}
