#include "tests/irsdk/linktest.h"
#include "tests/support/checkedsnapshot.h"

#include <array>
#include <atomic>
#include <chrono>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <signal.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

constexpr unsigned int kSomebodyElse = 4242;
constexpr std::size_t kPage = 4096;

class LinuxLink : public LinkTest {};

/** Whether a thread, or a process of one thread, is neither asleep nor at its end. */
bool isAtWork(pid_t thread) {
    std::ifstream file("/proc/" + std::to_string(thread) + "/stat");
    const std::string facts((std::istreambuf_iterator<char>(file)), {});
    const std::size_t afterName = facts.rfind(')');
    return afterName != std::string::npos &&
           (facts.compare(afterName, 3, ") R") == 0 || facts.compare(afterName, 3, ") D") == 0);
}

/** Time of the processor that this thread has had. */
std::chrono::nanoseconds threadTime() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

/** One wait of the link, and another thread that does something at certain moments of it. */
class WatchedWait {
public:
    template <typename Script>
    explicit WatchedWait(Script script)
        : m_reader(gettid()), m_thread([this, script] { script(*this); }) {}
    ~WatchedWait() {
        m_state = State::Over;
        m_thread.join();
    }
    WatchedWait(const WatchedWait&) = delete;
    WatchedWait& operator=(const WatchedWait&) = delete;

    [[nodiscard]] bool waitForData(char* data, int length) {
        constexpr int kTimeOut = 60'000;  // milliseconds
        m_state = State::Begun;
        const bool taken = irsdk_waitForDataReady(kTimeOut, data, length);
        m_state = State::Over;
        return taken;
    }

    void untilItBegins() const {
        while (m_state == State::ToCome) {
            std::this_thread::yield();
        }
    }

    /** False when it is over instead. */
    bool untilItSleeps() const {
        untilItBegins();
        while (m_state == State::Begun && isAtWork(m_reader)) {
            std::this_thread::yield();
        }
        return m_state == State::Begun;
    }

private:
    enum class State { ToCome, Begun, Over };

    std::atomic<State> m_state{State::ToCome};
    pid_t m_reader;
    std::thread m_thread;
};

TEST_P(LinuxLink, ABlockThatCannotHoldItsHeaderIsRefused) {
    for (const int size : {0, 1, 63}) {
        publisher.command("empty " + std::to_string(size));
        publisher.createEvent();
        EXPECT_FALSE(irsdk_startup()) << size;
        EXPECT_EQ(irsdk_lastError(), irsdk_Error::BlockTooSmall) << size;
        publisher.command("unlink");
        irsdk_shutdown();
    }
}

TEST_P(LinuxLink, ABlockThatStatesAnySizeIsRefused) {
    constexpr std::size_t kMoreThanTheMachineHas = std::size_t{400} << 30;
    publisher.command("empty " + std::to_string(kMoreThanTheMachineHas));
    publisher.createEvent();

    EXPECT_FALSE(irsdk_startup());
    EXPECT_EQ(irsdk_lastError(), irsdk_Error::BlockTooLarge);

    publisher.command("unlink");
    publisher.publishBlock(block);
    EXPECT_TRUE(irsdk_startup());
}

TEST_P(LinuxLink, ABlockThatGrowsToItsSizeIsTakenAtTheNextStart) {
    publisher.command("empty 0");
    publisher.createEvent();
    ASSERT_FALSE(irsdk_startup());

    publisher.publishBlock(block);

    EXPECT_TRUE(irsdk_startup());
}

TEST_P(LinuxLink, AnEventWithoutRoomForItsCounterIsNoEvent) {
    publisher.publish(block);
    publisher.command("truncate-event");

    EXPECT_FALSE(irsdk_startup());
    EXPECT_EQ(irsdk_lastError(), irsdk_Error::NoEvent);
}

TEST_P(LinuxLink, ABlockOfAnotherUserIsRefused) {
    publisher.publish(block);
    publisher.command("chown " + std::to_string(kSomebodyElse));

    EXPECT_FALSE(irsdk_startup());
    EXPECT_EQ(irsdk_lastError(), irsdk_Error::ForeignBlock);
    EXPECT_EQ(irsdk_getHeader(), nullptr);

    publisher.command("chown " + std::to_string(geteuid()));
    EXPECT_TRUE(irsdk_startup());
    EXPECT_EQ(irsdk_lastError(), irsdk_Error::None);
}

TEST_P(LinuxLink, AnEventOfAnotherUserIsRefused) {
    publisher.publish(block);
    publisher.command("chown " + std::to_string(kSomebodyElse) + " event");

    EXPECT_FALSE(irsdk_startup());
    EXPECT_EQ(irsdk_lastError(), irsdk_Error::ForeignEvent);
}

TEST_P(LinuxLink, ABlockThatCannotBeOpenedIsToldApartFromAMissingOne) {
    publisher.publish(block);
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    rlimit none = before;
    none.rlim_cur = 0;
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    const bool opened = irsdk_startup();
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);

    EXPECT_FALSE(opened);
    EXPECT_EQ(irsdk_lastError(), irsdk_Error::OpenFailed);
    EXPECT_TRUE(irsdk_startup());
}

TEST_P(LinuxLink, AHalfOpenLinkLetsAnAbandonedBlockGo) {
    publisher.publishBlock(block);
    ASSERT_FALSE(irsdk_startup());
    publisher.command("unlink");

    EXPECT_FALSE(irsdk_startup());
    EXPECT_EQ(irsdk_lastError(), irsdk_Error::NoBlock) << "not the event of a block that is gone";

    publisher.publish(block);
    publisher.completeChecked(0, 10);
    EXPECT_FALSE(takes());
    publisher.completeChecked(1, 11);
    EXPECT_TRUE(takes());
}

TEST_P(LinuxLink, AReplacedBlockIsTakenAfterAShutdown) {
    openAtTick10();
    publisher.command("unlink");
    publisher.publishBlock(block);
    publisher.completeChecked(0, 20);
    EXPECT_FALSE(takes()) << "the old block gets no more ticks";
    ASSERT_NE(irsdk_getHeader(), nullptr);

    irsdk_shutdown();
    EXPECT_FALSE(takes());
    publisher.completeChecked(1, 21);
    EXPECT_TRUE(takes());
}

TEST_P(LinuxLink, OpensWithTheRightToReadAlone) {
    publisher.publish(block);
    ASSERT_TRUE(irsdk_startup());

    std::ifstream maps("/proc/self/maps");
    const auto view = reinterpret_cast<std::uintptr_t>(irsdk_getHeader());
    bool found = false;
    for (std::string line; std::getline(maps, line);) {
        if (std::stoull(line, nullptr, 16) == view) {
            found = true;
            EXPECT_EQ(line.substr(line.find(' ') + 1, 4), "r--s");
        }
    }
    EXPECT_TRUE(found);
}

TEST_P(LinuxLink, ATruncatedBlockIsNoData) {
    openAtTick10();
    publisher.completeChecked(1, 11);
    for (const int size : {64, 10, 0}) {
        publisher.command("truncate " + std::to_string(size));

        EXPECT_FALSE(takes()) << size;
        EXPECT_EQ(irsdk_lastError(), irsdk_Error::BlockShrunk) << size;
        EXPECT_FALSE(irsdk_waitForDataReady(1, snapshot.data(), length()));
        EXPECT_FALSE(irsdk_isConnected());
        irsdk_header header{};
        std::vector<irsdk_varHeader> table;
        std::string text;
        int update = 0;
        EXPECT_FALSE(irsdk_copyHeader(header));
        EXPECT_FALSE(irsdk_copyVarHeaders(table));
        EXPECT_FALSE(irsdk_copySessionInfoStr(text, update));
        EXPECT_EQ(update, -1);
    }
}

TEST_P(LinuxLink, NothingIsPointedAtInATruncatedBlock) {
    openAtTick10();
    ASSERT_EQ(irsdk_varNameToIndex("Gear"), 2);
    publisher.command("truncate 0");

    EXPECT_EQ(irsdk_getVarHeaderPtr(), nullptr);
    EXPECT_EQ(irsdk_getVarHeaderEntry(0), nullptr);
    EXPECT_EQ(irsdk_varNameToIndex("Gear"), -1);
    EXPECT_EQ(irsdk_varNameToOffset("Gear"), -1);
    EXPECT_EQ(irsdk_getData(0), nullptr);
    EXPECT_EQ(irsdk_getSessionInfoStrUpdate(), -1);
    EXPECT_EQ(irsdk_getSessionInfoStr(), nullptr);
}

TEST_P(LinuxLink, NothingIsReadFromWhatIsLeftOfATruncatedBlock) {
    block.setBufferLength(static_cast<int>(kPage));
    snapshot.resize(static_cast<std::size_t>(block.snapshotLength()));
    openAtTick10();
    publisher.completeChecked(0, 11);
    publisher.command("truncate " + std::to_string(block.bytes().size() - 1));

    EXPECT_FALSE(takes()) << "the newest buffer is there whole, and so is all before it";
    EXPECT_EQ(irsdk_lastError(), irsdk_Error::BlockShrunk);
    EXPECT_FALSE(irsdk_isConnected());
    irsdk_header header{};
    std::vector<irsdk_varHeader> table;
    std::string text;
    int update = 0;
    EXPECT_FALSE(irsdk_copyHeader(header));
    EXPECT_FALSE(irsdk_copyVarHeaders(table));
    EXPECT_FALSE(irsdk_copySessionInfoStr(text, update));
}

TEST_P(LinuxLink, ABlockThatIsWholeAgainIsReadAnew) {
    openAtTick10();
    const std::size_t size = block.bytes().size();
    publisher.command("truncate 0");
    ASSERT_FALSE(takes());
    publisher.command("truncate " + std::to_string(size));
    publisher.publishBlock(block);
    publisher.completeChecked(1, 11);

    EXPECT_FALSE(takes()) << "the starting point";
    EXPECT_EQ(irsdk_lastError(), irsdk_Error::None);
    publisher.completeChecked(2, 12);
    EXPECT_TRUE(takes());
}

TEST_P(LinuxLink, ATickThatNeededNoWaitDoesNotEndTheNextOne) {
    openAtTick10();
    constexpr int kTimeOut = 20;  // milliseconds
    static_cast<void>(irsdk_waitForDataReady(1, nullptr));
    publisher.completeChecked(1, 11);
    ASSERT_TRUE(irsdk_waitForDataReady(kTimeOut, nullptr));
    const auto start = std::chrono::steady_clock::now();

    EXPECT_FALSE(irsdk_waitForDataReady(kTimeOut, nullptr));
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(kTimeOut));
}

TEST_P(LinuxLink, WithoutItsEventAWaitSleepsForItsTime) {
    openAtTick10();
    static constexpr int kTimeOut = 200;  // milliseconds
    const auto waitsAsleep = [this] {
        const auto start = std::chrono::steady_clock::now();
        const std::chrono::nanoseconds startOfWork = threadTime();
        EXPECT_FALSE(irsdk_waitForDataReady(kTimeOut, snapshot.data(), length()));
        EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(kTimeOut));
        EXPECT_LT(threadTime() - startOfWork, std::chrono::milliseconds(kTimeOut / 4));
    };
    std::thread cutter([this, reader = gettid()] {
        while (isAtWork(reader)) {
            std::this_thread::yield();
        }
        publisher.command("truncate-event");
    });
    waitsAsleep();
    cutter.join();
    waitsAsleep();
    publisher.poke(descriptorField(1, 0), 11);
    EXPECT_TRUE(irsdk_waitForDataReady(kTimeOut, snapshot.data(), length()));
}

RATAIP_IN_BOTH_PLACES(LinuxLink);

/** A block of a second process that is cut off while the link reads all of it without pause. */
class ShrinkingBlock : public LinkToOtherProcessTest {
protected:
    static constexpr int kFirstTick = 11;
    static constexpr int kLastTick = 10'000;

    ShrinkingBlock() {
        block.setBufferLength(16 * static_cast<int>(kPage));
        block.setSessionText(sessionText);
        snapshot.resize(static_cast<std::size_t>(block.snapshotLength()));
    }

    void openAnew() {
        irsdk_shutdown();
        publisher.command("unlink");
        openAtTick10();
        tick = kFirstTick - 1;
        refused = false;
    }

    /**
     * Reads over and over while another thread has ticks completed until one was taken, and then
     * the block cut off.
     */
    void readUntilCutOff(std::size_t size) {
        cut = Cut::ToCome;
        taken = 0;
        std::thread cutter([this, size] {
            for (int count = kFirstTick; taken == 0 && count <= kLastTick; ++count) {
                publisher.completeChecked(count % 3, count);
            }
            cut = Cut::OnItsWay;
            publisher.command("truncate " + std::to_string(size));
            cut = Cut::Done;
        });
        while (!refused && !HasFailure()) {
            const int answeredBefore = answered;
            readAll();
            cutsWithinAReading += refused && answered > answeredBefore ? 1 : 0;
        }
        cutter.join();
        EXPECT_GT(taken, 0);
    }

    void readAll() {
        readHeader();
        readTable();
        readText();
        readSnapshot();
        lookUp();
    }

    /** Whatever was asked of it, the link has nothing of a block that was cut off. */
    void expectNothing() {
        readAll();
        EXPECT_TRUE(table.empty());
        EXPECT_EQ(text, "");
        EXPECT_EQ(update, -1);
        for (char* data : {snapshot.data(), static_cast<char*>(nullptr)}) {
            EXPECT_FALSE(irsdk_waitForDataReady(1, data, length()));
            EXPECT_EQ(irsdk_lastError(), irsdk_Error::BlockShrunk);
        }
        EXPECT_FALSE(irsdk_isConnected());
    }

    int cutsWithinAReading = 0;

private:
    enum class Cut { ToCome, OnItsWay, Done };

    /** Before the cut the link answers; it refuses by telling of the cut, and from then on. */
    void note(bool answers, Cut before) {
        if (answers) {
            EXPECT_FALSE(refused);
            EXPECT_NE(before, Cut::Done);
            ++answered;
            return;
        }
        EXPECT_NE(cut, Cut::ToCome);
        EXPECT_EQ(irsdk_lastError(), irsdk_Error::BlockShrunk);
        refused = true;
    }

    void readHeader() {
        const Cut before = cut;
        irsdk_header header{};
        const bool answers = irsdk_copyHeader(header);
        note(answers, before);
        const bool isRight = header.numVars == block.header().numVars &&
                             header.bufferLength == block.header().bufferLength;
        // One that was cut off while it was copied must be known to be by now.
        if (answers && !isRight) {
            note(irsdk_copyVarHeaders(table), Cut::Done);
        }
    }

    void readTable() {
        const Cut before = cut;
        note(irsdk_copyVarHeaders(table), before);
        const auto count = static_cast<std::size_t>(block.header().numVars);
        EXPECT_EQ(table.size(), refused ? 0U : count);
        EXPECT_EQ(std::memcmp(table.data(), block.varHeaders(), table.size() * sizeof table[0]), 0);
    }

    void readText() {
        const Cut before = cut;
        note(irsdk_copySessionInfoStr(text, update), before);
        EXPECT_TRUE(text == (refused ? std::string() : sessionText));
        EXPECT_EQ(update, refused ? -1 : block.header().sessionInfoUpdate);
    }

    void readSnapshot() {
        const Cut before = cut;
        const bool isNew = takes();
        if (isNew || irsdk_lastError() != irsdk_Error::None) {
            note(isNew, before);
        }
        if (isNew) {
            EXPECT_TRUE(testsupport::isUntorn(snapshot.data(), snapshot.size()));
            EXPECT_GT(testsupport::checkedTick(snapshot.data()), tick);
            tick = testsupport::checkedTick(snapshot.data());
            EXPECT_LE(tick, kLastTick);
            ++taken;
        }
        EXPECT_FALSE(refused && irsdk_isConnected());
    }

    void lookUp() {
        const int index = irsdk_varNameToIndex("Speed");
        EXPECT_TRUE(index == 0 || index == -1);
        const int counter = irsdk_getSessionInfoStrUpdate();
        EXPECT_TRUE(counter == block.header().sessionInfoUpdate || counter == -1);
        static_cast<void>(irsdk_getSessionInfoStr());
        static_cast<void>(irsdk_getData(0));
    }

    const std::string sessionText = std::string(16 * kPage, 'a');
    std::atomic<Cut> cut{Cut::ToCome};
    bool refused = false;
    int answered = 0;
    std::atomic<int> taken{0};
    std::int32_t tick = 0;
    std::vector<irsdk_varHeader> table;
    std::string text;
    int update = 0;
};

TEST_F(ShrinkingBlock, IsSurvivedDuringReads) {
    constexpr int kCutsASize = 10;
    constexpr int kAttemptsASize = 500;
    const auto endOfFirstBuffer =
        static_cast<std::size_t>(block.descriptor(0).bufferOffset) + snapshot.size();
    ASSERT_LT(endOfFirstBuffer, block.bytes().size());
    for (const std::size_t size :
         {std::size_t{0}, sizeof(irsdk_header) - 1, kPage, endOfFirstBuffer}) {
        cutsWithinAReading = 0;
        for (int i = 0; i < kAttemptsASize && cutsWithinAReading < kCutsASize; ++i) {
            openAnew();
            readUntilCutOff(size);
            expectNothing();
            if (size == endOfFirstBuffer) {
                publisher.completeChecked(0, kLastTick + 1);
                expectNothing();
            }
            ASSERT_FALSE(HasFailure()) << size;
        }
        EXPECT_EQ(cutsWithinAReading, kCutsASize) << size;
    }
}

/**
 * A large block that is cut off in the middle of a copy: the copies take up nearly all of the time,
 * so that a cut at any moment meets one. It is filled with bytes that are not zero.
 */
class CutDuringACopy : public LinkToOwnProcessTest {
protected:
    static constexpr std::size_t kBlock = 16 << 20;
    static constexpr std::size_t kKept = 2 * kPage;  // the header among it
    static constexpr int kRounds = 20;
    // What a copy takes nearly last; the very end is fetched first by some.
    static constexpr std::size_t kNearTheEnd = std::size_t{64} * 1024;

    /** Publishes the block with a table, a text and a buffer that go to its end; opens the link. */
    void open() {
        publisher.command("unlink");
        publisher.command("empty " + std::to_string(kBlock));
        publisher.createEvent();
        std::memset(published() + sizeof(irsdk_header), 'x', kBlock - sizeof(irsdk_header) - 1);
        constexpr std::size_t kPayload = kKept / 2;
        publisher.setStatus(irsdk_stConnected);
        publisher.poke(offsetof(irsdk_header, varHeaderOffset), kPayload);
        publisher.poke(offsetof(irsdk_header, numVars),
                       static_cast<std::int32_t>((kBlock - kPayload) / sizeof(irsdk_varHeader)));
        publisher.poke(offsetof(irsdk_header, sessionInfoOffset), kPayload);
        publisher.poke(offsetof(irsdk_header, numBuf), 1);
        publisher.poke(offsetof(irsdk_header, bufferLength), kBlock - kPayload - 1);
        publisher.poke(bufferOffsetField(0), kPayload);
        publisher.setTick(0, 10);
        ASSERT_TRUE(irsdk_startup());
        ASSERT_FALSE(irsdk_getNewData(nullptr));
    }

    /** Copies until a copy fails, because the block is cut off; false when a copy was not whole. */
    template <typename Copy>
    bool survivesACut(Copy copy) {
        std::thread cutter([this] {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
            publisher.command("truncate " + std::to_string(kKept));
        });
        bool whole = true;
        const char* end = nullptr;
        while ((end = copy()) != nullptr) {
            whole = whole && *end == 'x';
        }
        cutter.join();
        EXPECT_EQ(irsdk_lastError(), irsdk_Error::BlockShrunk);
        irsdk_shutdown();
        return whole;
    }
};

TEST_F(CutDuringACopy, NoTableIsHandedOut) {
    std::vector<irsdk_varHeader> table;
    for (int round = 0; round < kRounds; ++round) {
        open();
        EXPECT_TRUE(survivesACut([&]() -> const char* {
            const bool copied = irsdk_copyVarHeaders(table);
            return copied ? (table.end() - kNearTheEnd / sizeof table[0])->name : nullptr;
        }));
        EXPECT_TRUE(table.empty());
    }
}

TEST_F(CutDuringACopy, NoTextIsHandedOut) {
    std::string text;
    int update = 0;
    for (int round = 0; round < kRounds; ++round) {
        open();
        EXPECT_TRUE(survivesACut([&]() -> const char* {
            if (!irsdk_copySessionInfoStr(text, update)) {
                return nullptr;
            }
            return text.empty() ? "" : &text[text.size() - kNearTheEnd];
        }));
        EXPECT_TRUE(text.empty());
        EXPECT_EQ(update, -1);
    }
}

TEST_F(CutDuringACopy, NoSnapshotIsHandedOut) {
    std::vector<char> large(kBlock);
    for (int round = 0; round < kRounds; ++round) {
        open();
        std::int32_t tickCount = 10;
        // The next tick is there as soon as the last one was taken.
        EXPECT_TRUE(survivesACut([&] {
            const std::int32_t next = ++tickCount;
            std::memcpy(published() + descriptorField(0, 0), &next, sizeof next);
            const bool taken = irsdk_getNewData(large.data(), static_cast<int>(large.size()));
            const auto length = static_cast<std::size_t>(irsdk_getDataLength());
            return taken ? &large[length - kNearTheEnd] : nullptr;
        }));
    }
}

TEST_F(LinkToOtherProcessTest, OneSignalWakesEveryReader) {
    publisher.publish(block);
    publisher.completeChecked(0, 10);
    constexpr int kReaders = 3;
    constexpr int kTimeOut = 60'000;  // milliseconds
    constexpr std::chrono::seconds kFarLess{30};
    std::array<pid_t, kReaders> readers{};
    std::array<int, 2> pipe{};
    ASSERT_EQ(pipe2(pipe.data(), O_CLOEXEC), 0);
    for (pid_t& reader : readers) {
        reader = fork();
        if (reader == 0) {
            const bool atStart = irsdk_startup() && !takes();
            const char ready = '!';
            const bool told = write(pipe[1], &ready, 1) == 1;
            const auto begin = std::chrono::steady_clock::now();
            const bool taken = irsdk_waitForDataReady(kTimeOut, snapshot.data(), length()) &&
                               testsupport::checkedTick(snapshot.data()) == 11;
            const bool woken = std::chrono::steady_clock::now() - begin < kFarLess;
            _exit(atStart && told && taken && woken ? 0 : 1);
        }
    }
    close(pipe[1]);
    // All have their starting point: one that has not reached its wait yet finds tick 11 itself.
    char ready = 0;
    for (int i = 0; i < kReaders; ++i) {
        ASSERT_EQ(read(pipe[0], &ready, 1), 1);
    }
    close(pipe[0]);
    for (const pid_t reader : readers) {
        while (isAtWork(reader)) {
            std::this_thread::yield();
        }
    }
    publisher.completeChecked(1, 11);

    for (const pid_t reader : readers) {
        int status = 0;
        ASSERT_EQ(waitpid(reader, &status, 0), reader);
        EXPECT_EQ(status, 0);
    }
}

TEST_F(LinkToOtherProcessTest, ALateSignalOfTheStartingPointDoesNotEndTheWait) {
    openAtTick10();
    irsdk_shutdown();
    publisher.setTick(1, 11);  // complete, and its signal is still to come
    WatchedWait wait([this](const WatchedWait& moment) {
        moment.untilItSleeps();
        publisher.command("signal");
        moment.untilItSleeps();
        publisher.completeChecked(2, 12);
    });

    ASSERT_TRUE(wait.waitForData(snapshot.data(), length()));
    EXPECT_EQ(testsupport::checkedTick(snapshot.data()), 12);
}

TEST_F(LongLook, TheCompletionOfTheStartingPointNeverEndsTheWait) {
    openAtTick10();
    constexpr int kRounds = 10;
    int tick = 10;
    for (int round = 0; round < kRounds; ++round) {
        irsdk_shutdown();
        publisher.setTick(kLastBuffer, ++tick);
        WatchedWait wait([this, &tick](const WatchedWait& moment) {
            moment.untilItBegins();
            passIntoTheLook();
            // Armed before this signal, the look finds the tick after it as its starting point.
            publisher.command("signal");
            publisher.setTick(kLastBuffer, ++tick);
            moment.untilItSleeps();
            publisher.command("signal");
            moment.untilItSleeps();
            publisher.setTick(kLastBuffer, ++tick);
            publisher.command("signal");
        });

        ASSERT_TRUE(wait.waitForData(nullptr, 0)) << round;
    }
}

TEST_F(LongLook, ATickThatTheFirstLookJustMissesIsTakenWithoutAWait) {
    openAtTick10();
    constexpr int kRounds = 50;
    int tick = 10;
    bool slept = true;
    for (int round = 0; slept && round < kRounds; ++round) {
        irsdk_shutdown();
        slept = false;
        const auto completeIn = [this, &tick](int buffer) {
            publisher.setTick(buffer, ++tick);
            publisher.command("signal");
        };
        WatchedWait wait([&](const WatchedWait& moment) {
            moment.untilItBegins();
            passIntoTheLook();
            completeIn(0);  // the buffer that was looked at first
            slept = moment.untilItSleeps();
            completeIn(kLastBuffer);
        });
        ASSERT_TRUE(wait.waitForData(nullptr, 0)) << round;
    }
    EXPECT_FALSE(slept) << "for as long as the tick after it takes";
}

TEST(LinuxBroadcast, AFullQueueDropsWithoutWaiting) {
    testsupport::BroadcastReceiver receiver(2);
    ASSERT_TRUE(receiver.isReady());
    for (int i = 0; i < 5; ++i) {
        irsdk_broadcastMsg(static_cast<irsdk_BroadcastMsg>(1), 0, i);
    }

    const std::vector<testsupport::BroadcastMessage> messages = receiver.take();
    ASSERT_EQ(messages.size(), 2U);
    EXPECT_EQ(messages[1].lParam, 1);

    irsdk_broadcastMsg(static_cast<irsdk_BroadcastMsg>(1), 0, 9);
    ASSERT_EQ(receiver.take().size(), 1U) << "the channel is as good as before";
}

}  // namespace
