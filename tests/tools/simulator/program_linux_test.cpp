#include "irsdk/layout.h"
#include "tests/support/drivenlaps.h"
#include "tests/support/simulatorprocess.h"
#include "tests/tools/simulator/shorttrack.h"
#include "tools/simulator/laplog.h"
#include "tools/simulator/variabletable.h"
#include "tools/simulator/world.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <map>
#include <span>
#include <sys/mman.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using namespace simulator;
using testsupport::DrivenLap;
using testsupport::onShortTrack;
using testsupport::SimulatorProcess;

namespace {

constexpr char kBlockFile[] = "/dev/shm/IRSDKMemMapFileName";
constexpr char kEventFile[] = "/dev/shm/IRSDKDataValidEvent";

/** The published block, mapped for reading as a client does. */
class MappedBlock {
public:
    MappedBlock() {
        const int file = ::shm_open("/IRSDKMemMapFileName", O_RDONLY, 0);
        struct stat facts {};
        if (file >= 0 && ::fstat(file, &facts) == 0) {
            m_size = static_cast<std::size_t>(facts.st_size);
            m_start = ::mmap(nullptr, m_size, PROT_READ, MAP_SHARED, file, 0);
            ::close(file);
        }
    }
    ~MappedBlock() {
        if (isMapped()) {
            ::munmap(m_start, m_size);
        }
    }
    MappedBlock(const MappedBlock&) = delete;
    MappedBlock& operator=(const MappedBlock&) = delete;

    bool isMapped() const { return m_start != nullptr && m_start != MAP_FAILED; }
    const std::byte* bytes() const { return static_cast<const std::byte*>(m_start); }
    const irsdk_header& header() const { return *static_cast<const irsdk_header*>(m_start); }
    std::span<const std::byte> all() const { return {bytes(), m_size}; }
    const irsdk_varBuf& descriptor(int index) const {
        return reinterpret_cast<const irsdk_varBuf*>(bytes() +
                                                     offsetof(irsdk_header, varBuf))[index];
    }

    int newest() const {
        int newest = 0;
        for (int index = 1; index < header().numBuf; ++index) {
            newest = descriptor(index).tickCount > descriptor(newest).tickCount ? index : newest;
        }
        return newest;
    }

    std::span<const std::byte> snapshot() const {
        return {bytes() + descriptor(newest()).bufferOffset,
                static_cast<std::size_t>(header().bufferLength)};
    }

private:
    void* m_start = nullptr;
    std::size_t m_size = 0;
};

bool objectsAreThere() {
    return std::filesystem::exists(kBlockFile) || std::filesystem::exists(kEventFile);
}

std::filesystem::path temporary(const char* name) {
    return std::filesystem::temp_directory_path() /
           (std::string("rataip-simulator-") + std::to_string(::getpid()) + name);
}

const std::vector<std::string> kLockstep = onShortTrack(6, {"--lockstep"});

/** That the program ends with that status and says this on the standard error alone. */
void expectRefusal(const std::vector<std::string>& arguments, int status,
                   const std::string& sentence) {
    SimulatorProcess errorsAside(arguments);
    EXPECT_EQ(errorsAside.waitForExit(), status);
    EXPECT_EQ(errorsAside.output(), "");
    SimulatorProcess process(arguments, SimulatorProcess::Console::Own);
    EXPECT_EQ(process.waitForExit(), status);
    EXPECT_EQ(process.output(), "rataip-simulator: " + sentence + '\n');
}

constexpr std::chrono::seconds kPatience(60);  // only a hang takes as long

std::int32_t newestTick(const MappedBlock& block) {
    return block.descriptor(block.newest()).tickCount;
}

// Whether there is a period of that length without a tick.
bool standsStill(const MappedBlock& block, std::chrono::milliseconds length) {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point end = Clock::now() + kPatience;
    std::int32_t tick = newestTick(block);
    Clock::time_point since = Clock::now();
    while (Clock::now() < end && Clock::now() - since < length) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        if (newestTick(block) != tick) {
            tick = newestTick(block);
            since = Clock::now();
        }
    }
    return Clock::now() - since >= length;
}

bool goesOn(const MappedBlock& block) {
    const auto end = std::chrono::steady_clock::now() + kPatience;
    const std::int32_t before = newestTick(block);
    while (newestTick(block) == before && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return newestTick(block) != before;
}

// A sum over the block at every tick of a run in lock step.
std::uint64_t sumOfRun(const std::vector<std::string>& arguments, int ticks) {
    SimulatorProcess process(arguments);
    EXPECT_TRUE(process.publishes());
    const MappedBlock block;
    std::uint64_t sum = 0xCBF29CE484222325U;
    for (int tick = 0; tick < ticks && block.isMapped(); ++tick) {
        EXPECT_EQ(process.step(), tick + 1);
        for (const std::byte byte : block.all().first(65536)) {
            sum = (sum ^ static_cast<std::uint64_t>(byte)) * 0x100000001B3U;
        }
        for (const std::byte byte : block.snapshot()) {
            sum = (sum ^ static_cast<std::uint64_t>(byte)) * 0x100000001B3U;
        }
    }
    EXPECT_EQ(process.quit(), 0);
    return sum;
}

}  // namespace

TEST(SimulatorProgram, PrintsItsVersionAndItsHelp) {
    SimulatorProcess version({"--version"});
    EXPECT_EQ(version.waitForExit(), 0);
    EXPECT_EQ(version.output(), "rataip-simulator " SIMULATOR_VERSION "\n");
    SimulatorProcess help({"--help"});
    EXPECT_EQ(help.waitForExit(), 0);
    EXPECT_NE(help.output().find("--lockstep"), std::string::npos);
    EXPECT_FALSE(objectsAreThere());
}

TEST(SimulatorProgram, EndsWithOneSentenceAndTheStatusOfAllProgramsAfterABadOption) {
    expectRefusal({"--cars", "900"}, 1, "--cars needs a whole number from 1 to 64, not \"900\".");
    EXPECT_FALSE(objectsAreThere());
}

TEST(SimulatorProgram, EndsWithOneSentenceWhenItsLogCannotBeWritten) {
    expectRefusal({"--log", "/nowhere/at/all.tsv"}, 2,
                  "The log \"/nowhere/at/all.tsv\" cannot be written.");
    EXPECT_FALSE(objectsAreThere());
}

TEST(SimulatorProgram, CreatesItsObjectsForItsOwnUserAlone) {
    SimulatorProcess process(kLockstep);
    ASSERT_TRUE(process.publishes());
    struct stat facts {};
    for (const char* name : {kBlockFile, kEventFile}) {
        ASSERT_EQ(::stat(name, &facts), 0) << name;
        EXPECT_EQ(facts.st_mode & 0777U, 0600U) << name;
        EXPECT_EQ(facts.st_uid, ::geteuid());
    }
}

TEST(SimulatorProgram, PublishesOneTickForEachLineInLockStep) {
    SimulatorProcess process(kLockstep);
    ASSERT_TRUE(process.publishes());
    const MappedBlock block;
    ASSERT_TRUE(block.isMapped());
    EXPECT_EQ(block.header().status, irsdk_stConnected);
    process.writeLine("");
    EXPECT_EQ(process.readLine(), "tick 1");
    EXPECT_EQ(block.descriptor(block.newest()).tickCount, 1);
    process.writeLine("step");
    EXPECT_EQ(process.readLine(), "tick 2");
    process.writeLine("step 40\r");
    EXPECT_EQ(process.readLine(), "tick 42");
    EXPECT_EQ(block.descriptor(block.newest()).tickCount, 42);
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_EQ(block.descriptor(block.newest()).tickCount, 42) << "nothing by the clock";
}

TEST(SimulatorProgram, CountsEachCompletedBufferInTheEvent) {
    SimulatorProcess process(kLockstep);
    ASSERT_TRUE(process.publishes());
    const int file = ::shm_open("/IRSDKDataValidEvent", O_RDONLY, 0);
    ASSERT_GE(file, 0);
    void* start = ::mmap(nullptr, 4, PROT_READ, MAP_SHARED, file, 0);
    ::close(file);
    ASSERT_NE(start, MAP_FAILED);
    std::uint32_t before = 0;
    std::uint32_t after = 0;
    std::memcpy(&before, start, sizeof before);
    process.step(25);
    std::memcpy(&after, start, sizeof after);
    EXPECT_EQ(after - before, 25U);
    ::munmap(start, 4);
}

TEST(SimulatorProgram, RefusesCommandsThatItDoesNotKnow) {
    SimulatorProcess process(kLockstep);
    ASSERT_TRUE(process.publishes());
    for (const char* line : {"step 0", "step -1", "step x", "jump", "stall", "stall x", "stall -1",
                             "status", "status maybe", "quit now"}) {
        process.writeLine(line);
        EXPECT_EQ(process.readLine(), std::string("unknown command: ") + line);
    }
    EXPECT_EQ(process.step(), 1);
}

TEST(SimulatorProgram, ClearsAndSetsTheStatusBitWhenTold) {
    SimulatorProcess process(kLockstep);
    ASSERT_TRUE(process.publishes());
    const MappedBlock block;
    process.writeLine("status off");
    EXPECT_EQ(process.readLine(), "ok");
    EXPECT_EQ(block.header().status & irsdk_stConnected, 0);
    process.writeLine("status on");
    EXPECT_EQ(process.readLine(), "ok");
    EXPECT_EQ(block.header().status & irsdk_stConnected, irsdk_stConnected);
}

TEST(SimulatorProgram, StallsWhenToldWhileItRunsByTheClock) {
    SimulatorProcess process(onShortTrack(3, {"--commands", "--speed", "10"}));
    ASSERT_TRUE(process.publishes());
    const MappedBlock block;
    process.writeLine("stall 6");
    EXPECT_TRUE(standsStill(block, std::chrono::seconds(1)));
    EXPECT_EQ(process.readLineThatBegins("ok"), "ok");
    EXPECT_TRUE(goesOn(block));
    process.writeLine("step");
    EXPECT_EQ(process.readLineThatBegins("step is"), "step is for lock step only");
    EXPECT_EQ(process.quit(), 0);
}

TEST(SimulatorProgram, EndsInOrderWhenItsInputEndsInLockStep) {
    SimulatorProcess process(kLockstep);
    ASSERT_TRUE(process.publishes());
    process.writeLine("step 3");
    process.closeInput();
    EXPECT_EQ(process.waitForExit(), 0);
    EXPECT_NE(process.output().find("tick 3\n"), std::string::npos);
    EXPECT_FALSE(objectsAreThere());
}

TEST(SimulatorProgram, ClearsTheStatusBitAndRemovesItsObjectsOnCtrlC) {
    for (const int number : {SIGINT, SIGTERM}) {
        SimulatorProcess process({"--track", "short"});
        ASSERT_TRUE(process.publishes());
        const MappedBlock block;
        ASSERT_TRUE(block.isMapped());
        ::kill(process.id(), number);
        EXPECT_EQ(process.waitForExit(), 0);
        EXPECT_EQ(block.header().status & irsdk_stConnected, 0);
        EXPECT_FALSE(objectsAreThere());
    }
}

TEST(SimulatorProgram, RefusesToStartWhileAnotherOnePublishes) {
    SimulatorProcess first(kLockstep);
    ASSERT_TRUE(first.publishes());
    expectRefusal(kLockstep, 2, "Another simulator is publishing on this machine.");
    EXPECT_TRUE(std::filesystem::exists(kBlockFile)) << "the first one's";
    EXPECT_EQ(first.step(), 1);
}

TEST(SimulatorProgram, TakesOverWhatACrashedOneLeft) {
    SimulatorProcess crashed({"--track", "short", "--buffer-count", "4", "--pad-buffer", "50000"});
    ASSERT_TRUE(crashed.publishes());
    const MappedBlock old;
    ASSERT_TRUE(old.isMapped());
    crashed.kill();
    ASSERT_TRUE(std::filesystem::exists(kBlockFile));
    SimulatorProcess next(kLockstep);
    ASSERT_TRUE(next.publishes());
    const MappedBlock block;
    EXPECT_EQ(next.step(5), 5);
    EXPECT_EQ(block.header().numBuf, 3);
    EXPECT_EQ(block.descriptor(block.newest()).tickCount, 5);
    EXPECT_EQ(old.header().numBuf, 4) << "a reader's old block stays as it was";
    EXPECT_EQ(next.quit(), 0);
    EXPECT_FALSE(objectsAreThere());
}

TEST(SimulatorProgram, PublishesTheSameBytesTwiceForTheSameSeed) {
    const auto arguments = onShortTrack(6, {"--lockstep", "--seed", "9"});
    const std::uint64_t first = sumOfRun(arguments, 400);
    EXPECT_EQ(sumOfRun(arguments, 400), first);
    EXPECT_NE(sumOfRun(onShortTrack(6, {"--lockstep", "--seed", "10"}), 400), first);
}

TEST(SimulatorProgram, PublishesTheLapsThatItsLogTellsOf) {
    const std::filesystem::path log = temporary("laps.tsv");
    const Options options = shortTrack();
    const VariableTable table(options);
    std::map<int, std::vector<float>> published;
    {
        SimulatorProcess process(
            testsupport::inLockStep(onShortTrack(6, {"--laps", "4"}), log.string()));
        ASSERT_TRUE(process.publishes());
        const MappedBlock block;
        const std::size_t times = table.find("CarIdxLastLapTime")->offset;
        const std::size_t laps = table.find("CarIdxLapCompleted")->offset;
        std::map<int, std::int32_t> counts;
        while (process.step()) {
            for (int car = 0; car < options.cars; ++car) {
                const std::size_t at = static_cast<std::size_t>(car) * 4U;
                std::int32_t lap = 0;
                float time = 0.0F;
                std::memcpy(&lap, block.snapshot().data() + laps + at, sizeof lap);
                std::memcpy(&time, block.snapshot().data() + times + at, sizeof time);
                if (counts.try_emplace(car, -1).first->second < lap) {
                    published[car].push_back(time);
                    counts[car] = lap;
                }
            }
        }
        EXPECT_EQ(process.waitForExit(), 0);
    }
    int compared = 0;
    const auto driven = testsupport::readDrivenLaps(log.string());
    ASSERT_TRUE(driven.has_value());
    for (const DrivenLap& lap : *driven) {
        EXPECT_EQ(lap.published, static_cast<float>(lap.seconds));
        const std::vector<float>& times = published[lap.car];
        const auto index = static_cast<std::size_t>(lap.lap);
        if (lap.complete && index < times.size()) {
            EXPECT_EQ(times[index], lap.published) << "car " << lap.car << ", lap " << lap.lap;
            ++compared;
        }
    }
    EXPECT_GT(compared, 12);
    std::filesystem::remove(log);
}

TEST(SimulatorProgram, EndsAfterTheTimeAskedFor) {
    SimulatorProcess process({"--speed", "max", "--duration", "20", "--track", "short"});
    EXPECT_EQ(process.waitForExit(), 0);
    EXPECT_NE(process.output().find("Ended after 1200 ticks."), std::string::npos);
    EXPECT_FALSE(objectsAreThere());
}

TEST(SimulatorProgram, EndsSomeTicksAfterTheLapsAskedFor) {
    SimulatorProcess process({"--speed", "max", "--laps", "2", "--track", "short"});
    EXPECT_EQ(process.waitForExit(), 0);
    EXPECT_NE(process.output().find("flying, complete"), std::string::npos);
}

TEST(SimulatorProgram, PrintsNothingWhenQuiet) {
    SimulatorProcess process(onShortTrack(6, {"--lockstep", "--quiet"}),
                             SimulatorProcess::Console::Own);
    process.writeLine("step 10");
    EXPECT_EQ(process.quit(), 0);
    EXPECT_EQ(process.output(), "");
}

TEST(SimulatorProgram, KeepsPaceWithTheClock) {
    SimulatorProcess process(onShortTrack(3, {"--speed", "4"}));
    ASSERT_TRUE(process.publishes());
    const MappedBlock block;
    ASSERT_TRUE(goesOn(block)) << "the block is there before its first tick";
    constexpr double kPace = 240.0;
    constexpr double kTolerance = 0.1 * kPace;
    constexpr int kAttempts = 60;  // a busy machine may stop either program in some of the seconds
    double pace = 0.0;
    for (int i = 0; std::abs(pace - kPace) > kTolerance && i < kAttempts; ++i) {
        const std::int32_t before = newestTick(block);
        const auto start = std::chrono::steady_clock::now();
        std::this_thread::sleep_for(std::chrono::seconds(1));
        const std::int32_t ticks = newestTick(block) - before;
        const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start;
        pace = ticks / passed.count();
    }
    EXPECT_NEAR(pace, kPace, kTolerance);
}
