#include "irsdk/irsdk.h"
#include "irsdk/layout.h"
#include "tests/tools/simulator/simulatorprocess_linux.h"
#include "tools/simulator/checksum.h"
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
#include <fstream>
#include <map>
#include <span>
#include <sstream>
#include <sys/mman.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using namespace simulator;

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

const std::vector<std::string> kLockstep = {"--lockstep", "--track", "short", "--cars", "6"};

std::vector<std::string> with(std::vector<std::string> arguments,
                              const std::vector<std::string>& more) {
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
}

// Starts a simulator and waits until it publishes.
void begin(SimulatorProcess& process) {
    ASSERT_NE(process.readUntil("Publishing "), "");
}

constexpr std::chrono::seconds kPatience(60);  // only a hang takes as long

std::int32_t newestTick(const MappedBlock& block) {
    return block.descriptor(block.newest()).tickCount;
}

// Whether there comes a time of that length in which no tick is published.
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

// Everything that a run in lock step has published, as one sum over the block at every tick.
std::uint64_t sumOfRun(const std::vector<std::string>& arguments, int ticks) {
    SimulatorProcess process(arguments);
    EXPECT_NE(process.readUntil("Publishing "), "");
    const MappedBlock block;
    std::uint64_t sum = 0xCBF29CE484222325U;
    for (int tick = 0; tick < ticks && block.isMapped(); ++tick) {
        process.tell("");
        EXPECT_EQ(process.readUntil("tick "), "tick " + std::to_string(tick + 1));
        for (const std::byte byte : block.all().first(65536)) {
            sum = (sum ^ static_cast<std::uint64_t>(byte)) * 0x100000001B3U;
        }
        for (const std::byte byte : block.snapshot()) {
            sum = (sum ^ static_cast<std::uint64_t>(byte)) * 0x100000001B3U;
        }
    }
    process.tell("quit");
    EXPECT_EQ(process.wait(), 0);
    return sum;
}

}  // namespace

TEST(SimulatorProgram, PrintsItsVersionAndItsHelp) {
    SimulatorProcess version({"--version"});
    EXPECT_EQ(version.wait(), 0);
    EXPECT_EQ(version.output(), "rataip-simulator " SIMULATOR_VERSION "\n");
    SimulatorProcess help({"--help"});
    EXPECT_EQ(help.wait(), 0);
    EXPECT_NE(help.output().find("--lockstep"), std::string::npos);
    EXPECT_FALSE(objectsAreThere());
}

TEST(SimulatorProgram, EndsWithOneSentenceAndTheStatusOfAllProgramsAfterABadOption) {
    SimulatorProcess process({"--cars", "900"});
    EXPECT_EQ(process.wait(), 1);
    EXPECT_EQ(process.errors(),
              "rataip-simulator: --cars needs a whole number from 1 to 64, not \"900\".\n");
    EXPECT_EQ(process.output(), "");
    EXPECT_FALSE(objectsAreThere());
}

TEST(SimulatorProgram, EndsWithOneSentenceWhenItsLogCannotBeWritten) {
    SimulatorProcess process({"--log", "/nowhere/at/all.tsv"});
    EXPECT_EQ(process.wait(), 2);
    EXPECT_EQ(process.errors(),
              "rataip-simulator: The log \"/nowhere/at/all.tsv\" cannot be written.\n");
    EXPECT_FALSE(objectsAreThere());
}

TEST(SimulatorProgram, CreatesItsObjectsForItsOwnUserAlone) {
    SimulatorProcess process(kLockstep);
    begin(process);
    struct stat facts {};
    for (const char* name : {kBlockFile, kEventFile}) {
        ASSERT_EQ(::stat(name, &facts), 0) << name;
        EXPECT_EQ(facts.st_mode & 0777U, 0600U) << name;
        EXPECT_EQ(facts.st_uid, ::geteuid());
    }
}

TEST(SimulatorProgram, PublishesOneTickForEachLineInLockStep) {
    SimulatorProcess process(kLockstep);
    begin(process);
    const MappedBlock block;
    ASSERT_TRUE(block.isMapped());
    EXPECT_EQ(block.header().status, irsdk_stConnected);
    process.tell("");
    EXPECT_EQ(process.readLine(), "tick 1");
    EXPECT_EQ(block.descriptor(block.newest()).tickCount, 1);
    process.tell("step");
    EXPECT_EQ(process.readLine(), "tick 2");
    process.tell("step 40\r");
    EXPECT_EQ(process.readLine(), "tick 42");
    EXPECT_EQ(block.descriptor(block.newest()).tickCount, 42);
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_EQ(block.descriptor(block.newest()).tickCount, 42) << "nothing by the clock";
}

TEST(SimulatorProgram, CountsEachCompletedBufferInTheEvent) {
    SimulatorProcess process(kLockstep);
    begin(process);
    const int file = ::shm_open("/IRSDKDataValidEvent", O_RDONLY, 0);
    ASSERT_GE(file, 0);
    void* start = ::mmap(nullptr, 4, PROT_READ, MAP_SHARED, file, 0);
    ::close(file);
    ASSERT_NE(start, MAP_FAILED);
    std::uint32_t before = 0;
    std::uint32_t after = 0;
    std::memcpy(&before, start, sizeof before);
    process.tell("step 25");
    process.readUntil("tick ");
    std::memcpy(&after, start, sizeof after);
    EXPECT_EQ(after - before, 25U);
    ::munmap(start, 4);
}

TEST(SimulatorProgram, RefusesCommandsThatItDoesNotKnow) {
    SimulatorProcess process(kLockstep);
    begin(process);
    for (const char* line : {"step 0", "step -1", "step x", "jump", "stall", "stall x", "stall -1",
                             "status", "status maybe", "quit now"}) {
        process.tell(line);
        EXPECT_EQ(process.readLine(), std::string("unknown command: ") + line);
    }
    process.tell("step");
    EXPECT_EQ(process.readLine(), "tick 1");
}

TEST(SimulatorProgram, ClearsAndSetsTheStatusBitWhenTold) {
    SimulatorProcess process(kLockstep);
    begin(process);
    const MappedBlock block;
    process.tell("status off");
    EXPECT_EQ(process.readLine(), "ok");
    EXPECT_EQ(block.header().status & irsdk_stConnected, 0);
    process.tell("status on");
    EXPECT_EQ(process.readLine(), "ok");
    EXPECT_EQ(block.header().status & irsdk_stConnected, irsdk_stConnected);
}

TEST(SimulatorProgram, StallsWhenToldWhileItRunsByTheClock) {
    SimulatorProcess process({"--commands", "--track", "short", "--cars", "3", "--speed", "10"});
    begin(process);
    const MappedBlock block;
    process.tell("stall 6");
    EXPECT_TRUE(standsStill(block, std::chrono::seconds(1)));
    EXPECT_EQ(process.readUntil("ok"), "ok");
    EXPECT_TRUE(goesOn(block));
    process.tell("step");
    EXPECT_EQ(process.readUntil("step is"), "step is for lock step only");
    process.tell("quit");
    EXPECT_EQ(process.wait(), 0);
}

TEST(SimulatorProgram, EndsInOrderWhenItsInputEndsInLockStep) {
    SimulatorProcess process(kLockstep);
    begin(process);
    process.tell("step 3");
    process.closeInput();
    EXPECT_EQ(process.wait(), 0);
    EXPECT_NE(process.output().find("tick 3\n"), std::string::npos);
    EXPECT_FALSE(objectsAreThere());
}

TEST(SimulatorProgram, ClearsTheStatusBitAndRemovesItsObjectsOnCtrlC) {
    for (const int number : {SIGINT, SIGTERM}) {
        SimulatorProcess process({"--track", "short"});
        begin(process);
        const MappedBlock block;
        ASSERT_TRUE(block.isMapped());
        process.sendSignal(number);
        EXPECT_EQ(process.wait(), 0);
        EXPECT_EQ(block.header().status & irsdk_stConnected, 0);
        EXPECT_FALSE(objectsAreThere());
    }
}

TEST(SimulatorProgram, RefusesToStartWhileAnotherOnePublishes) {
    SimulatorProcess first(kLockstep);
    begin(first);
    SimulatorProcess second(kLockstep);
    EXPECT_EQ(second.wait(), 2);
    EXPECT_EQ(second.errors(),
              "rataip-simulator: Another simulator is publishing on this machine.\n");
    EXPECT_TRUE(std::filesystem::exists(kBlockFile)) << "the first one's";
    first.tell("");
    EXPECT_EQ(first.readLine(), "tick 1");
}

TEST(SimulatorProgram, TakesOverWhatACrashedOneLeft) {
    SimulatorProcess crashed({"--track", "short", "--buffer-count", "4", "--pad-buffer", "50000"});
    begin(crashed);
    const MappedBlock old;
    ASSERT_TRUE(old.isMapped());
    crashed.sendSignal(SIGKILL);
    EXPECT_EQ(crashed.wait(), -SIGKILL);
    ASSERT_TRUE(std::filesystem::exists(kBlockFile));
    SimulatorProcess next(kLockstep);
    begin(next);
    const MappedBlock block;
    next.tell("step 5");
    EXPECT_EQ(next.readLine(), "tick 5");
    EXPECT_EQ(block.header().numBuf, 3);
    EXPECT_EQ(block.descriptor(block.newest()).tickCount, 5);
    EXPECT_EQ(old.header().numBuf, 4) << "a reader's old block stays as it was";
    next.tell("quit");
    EXPECT_EQ(next.wait(), 0);
    EXPECT_FALSE(objectsAreThere());
}

TEST(SimulatorProgram, PublishesTheSameBytesTwiceForTheSameSeed) {
    const auto arguments = with(kLockstep, {"--seed", "9"});
    const std::uint64_t first = sumOfRun(arguments, 400);
    EXPECT_EQ(sumOfRun(arguments, 400), first);
    EXPECT_NE(sumOfRun(with(kLockstep, {"--seed", "10"}), 400), first);
}

TEST(SimulatorProgram, PublishesTheLapsThatItsLogTellsOf) {
    const std::filesystem::path log = temporary("laps.tsv");
    Options options;
    options.track = TrackChoice::Short;
    options.cars = 6;
    const VariableTable table(options);
    std::map<int, std::vector<float>> published;
    {
        SimulatorProcess process(with(kLockstep, {"--log", log.string(), "--laps", "4"}));
        begin(process);
        const MappedBlock block;
        const std::size_t times = table.find("CarIdxLastLapTime")->offset;
        const std::size_t laps = table.find("CarIdxLapCompleted")->offset;
        std::map<int, std::int32_t> counts;
        while (true) {
            process.tell("");
            const std::string answer = process.readUntil("tick ");
            if (answer.empty()) {
                break;
            }
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
        EXPECT_EQ(process.wait(), 0);
    }
    std::ifstream file(log);
    std::string line;
    std::getline(file, line);
    int compared = 0;
    while (std::getline(file, line)) {
        std::istringstream columns(line);
        int car = 0;
        int lap = 0;
        std::string kind;
        double seconds = 0.0;
        float asFloat = 0.0F;
        columns >> car >> lap >> kind >> seconds >> asFloat;
        EXPECT_EQ(asFloat, static_cast<float>(seconds));
        if (line.substr(line.size() - 3) == "yes" &&
            static_cast<std::size_t>(lap) < published[car].size()) {
            EXPECT_EQ(published[car][static_cast<std::size_t>(lap)], asFloat) << line;
            ++compared;
        }
    }
    EXPECT_GT(compared, 12);
    std::filesystem::remove(log);
}

TEST(SimulatorProgram, EndsAfterTheTimeAskedFor) {
    SimulatorProcess process({"--speed", "max", "--duration", "20", "--track", "short"});
    EXPECT_EQ(process.wait(), 0);
    EXPECT_NE(process.output().find("Ended after 1200 ticks."), std::string::npos);
    EXPECT_FALSE(objectsAreThere());
}

TEST(SimulatorProgram, EndsSomeTicksAfterTheLapsAskedFor) {
    SimulatorProcess process({"--speed", "max", "--laps", "2", "--track", "short"});
    EXPECT_EQ(process.wait(), 0);
    EXPECT_NE(process.output().find("flying, complete"), std::string::npos);
}

TEST(SimulatorProgram, PrintsNothingWhenQuiet) {
    SimulatorProcess process(with(kLockstep, {"--quiet"}));
    process.tell("step 10");
    process.tell("quit");
    EXPECT_EQ(process.wait(), 0);
    EXPECT_EQ(process.output(), "");
    EXPECT_EQ(process.errors(), "");
}

TEST(SimulatorProgram, KeepsPaceWithTheClock) {
    SimulatorProcess process({"--track", "short", "--cars", "3", "--speed", "4"});
    begin(process);
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

TEST(SimulatorProgram, PrintsTheBroadcastMessagesThatItGets) {
    SimulatorProcess process(kLockstep);
    begin(process);
    irsdk_broadcastMsg(irsdk_BroadcastMsg{3}, -5, 70000);
    const std::string line = process.readUntil("Broadcast message");
    EXPECT_EQ(line.rfind("Broadcast message 3 (-5, 70000), number ", 0), 0U) << line;
}

TEST(SimulatorProgram, IsReadByTheLinkWithoutALostOrTornTick) {
    Options options;
    options.track = TrackChoice::Short;
    options.cars = 6;
    const std::size_t checksumAt = VariableTable(options).find(kChecksumName)->offset;
    SimulatorProcess process(kLockstep);
    begin(process);
    ASSERT_TRUE(irsdk_startup());
    std::vector<char> data(static_cast<std::size_t>(irsdk_getHeader()->bufferLength));
    process.tell("");
    process.readUntil("tick ");
    EXPECT_FALSE(irsdk_getNewData(data.data())) << "the first look only notes the tick";
    for (int tick = 2; tick < 300; ++tick) {
        process.tell("");
        process.readUntil("tick ");
        ASSERT_TRUE(irsdk_getNewData(data.data()));
        ASSERT_FALSE(irsdk_getNewData(data.data()));
        std::int32_t checksum = 0;
        std::memcpy(&checksum, data.data() + checksumAt, sizeof checksum);
        EXPECT_EQ(snapshotChecksum(std::as_bytes(std::span(data)), checksumAt), checksum);
    }
    irsdk_shutdown();
}
