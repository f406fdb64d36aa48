#include "irsdk/guardedmapping_linux.h"
#include "tests/irsdk/linktest.h"
#include "tests/support/checkedsnapshot.h"

#include <array>
#include <chrono>
#include <cstring>
#include <fcntl.h>
#include <fstream>
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

TEST_P(LinuxLink, ATruncatedBlockIsNoReasonToEndForPointersEither) {
    block.setBufferLength(3 * static_cast<int>(kPage));
    openAtTick10();
    const irsdk_header* header = irsdk_getHeader();
    ASSERT_EQ(header->numVars, 3);
    publisher.command("truncate 0");

    EXPECT_EQ(header->numVars, 0) << "a block that went away reads as zeros";
    EXPECT_EQ(irsdk_getVarHeaderEntry(0), nullptr);
    EXPECT_EQ(irsdk_varNameToIndex("Speed"), -1);
    EXPECT_EQ(irsdk_getData(0), nullptr);
    EXPECT_EQ(irsdk_getSessionInfoStrUpdate(), 0);
    EXPECT_STREQ(irsdk_getSessionInfoStr(), "");
}

TEST_P(LinuxLink, ABlockThatWasLostStaysLostUntilShutdown) {
    openAtTick10();
    const std::size_t size = block.bytes().size();
    publisher.command("truncate 0");
    ASSERT_EQ(irsdk_getHeader()->numVars, 0);
    publisher.command("truncate " + std::to_string(size));
    publisher.publishBlock(block);
    publisher.completeChecked(1, 11);

    EXPECT_FALSE(takes());
    EXPECT_EQ(irsdk_lastError(), irsdk_Error::BlockShrunk);

    irsdk_shutdown();
    EXPECT_FALSE(takes());
    publisher.completeChecked(2, 12);
    EXPECT_TRUE(takes());
}

TEST_P(LinuxLink, AnEventThatWasCutOffEndsWaitsByTimeAlone) {
    openAtTick10();
    publisher.command("truncate-event");

    EXPECT_FALSE(irsdk_waitForDataReady(20, snapshot.data(), length()));
    publisher.poke(descriptorField(1, 0), 11);
    EXPECT_TRUE(irsdk_waitForDataReady(20, snapshot.data(), length()));
}

RATAIP_IN_BOTH_PLACES(LinuxLink);

TEST_F(LinkToOtherProcessTest, ABlockThatShrinksDuringReadsIsSurvived) {
    block.setBufferLength(64 * static_cast<int>(kPage));
    snapshot.resize(static_cast<std::size_t>(block.snapshotLength()));
    publisher.publish(block);
    publisher.command("shrink 0");
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(2);
    irsdk_header header{};
    std::vector<irsdk_varHeader> table;
    std::string text;
    int update = 0;
    int rounds = 0;
    while (std::chrono::steady_clock::now() < end) {
        if (irsdk_startup()) {
            static_cast<void>(takes());
            irsdk_copyHeader(header);
            irsdk_copyVarHeaders(table);
            irsdk_copySessionInfoStr(text, update);
            irsdk_getVarHeaderEntry(0);
        }
        irsdk_shutdown();
        ++rounds;
    }
    EXPECT_GT(std::stoi(publisher.command("stop")), 0);

    EXPECT_GT(rounds, 0);
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
    std::this_thread::sleep_for(std::chrono::milliseconds(200));  // and most have reached it now
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
    std::thread writer([this] {
        std::this_thread::sleep_for(std::chrono::milliseconds(150));
        publisher.command("signal");
        std::this_thread::sleep_for(std::chrono::milliseconds(150));
        publisher.completeChecked(2, 12);
    });

    const bool taken = irsdk_waitForDataReady(20'000, snapshot.data(), length());
    writer.join();

    ASSERT_TRUE(taken);
    EXPECT_EQ(testsupport::checkedTick(snapshot.data()), 12);
}

TEST_F(LinkToOtherProcessTest, TheCompletionOfTheStartingPointNeverEndsTheWait) {
    publisher.publish(block);
    publisher.command("every 1 3");
    constexpr int kRounds = 5000;
    int met = 0;
    for (int i = 0; i < kRounds; ++i) {
        irsdk_shutdown();
        met += irsdk_waitForDataReady(5000, snapshot.data(), length()) ? 1 : 0;
    }
    publisher.command("stop");

    // A reader that is stopped in the middle of both copies may miss a tick once in a while.
    EXPECT_GE(met, kRounds - 3);
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

/** A file that can be cut off, in place of a simulator's object. */
class CutFile {
public:
    CutFile() : m_descriptor(memfd_create("rataip-test", MFD_CLOEXEC)) { resize(2 * kPage); }
    ~CutFile() { close(m_descriptor); }
    CutFile(const CutFile&) = delete;
    CutFile& operator=(const CutFile&) = delete;

    void resize(std::size_t size) {
        ASSERT_EQ(ftruncate(m_descriptor, static_cast<off_t>(size)), 0);
    }
    [[nodiscard]] int descriptor() const { return m_descriptor; }

private:
    int m_descriptor;
};

struct sigaction currentAction() {
    struct sigaction action {};
    sigaction(SIGBUS, nullptr, &action);
    return action;
}

bool isSame(const struct sigaction& left, const struct sigaction& right) {
    return left.sa_sigaction == right.sa_sigaction;
}

char firstByte(const irsdk::GuardedMapping& mapping) {
    return *static_cast<const volatile char*>(mapping.data());
}

TEST(GuardedMapping, ReadsZerosWhereTheFileEndsMeanwhile) {
    CutFile file;
    irsdk::GuardedMapping mapping;
    ASSERT_TRUE(mapping.map(file.descriptor(), 2 * kPage));
    EXPECT_TRUE(mapping.isIntact());

    file.resize(0);

    EXPECT_EQ(firstByte(mapping), 0);
    EXPECT_FALSE(mapping.isIntact());
}

TEST(GuardedMapping, ReturnsTheHandlerThatWasThere) {
    const struct sigaction before = currentAction();
    CutFile file;
    {
        irsdk::GuardedMapping first;
        irsdk::GuardedMapping second;
        ASSERT_TRUE(first.map(file.descriptor(), kPage));
        ASSERT_TRUE(second.map(file.descriptor(), kPage));
        EXPECT_FALSE(isSame(currentAction(), before));
        first.unmap();
        EXPECT_FALSE(isSame(currentAction(), before));
    }
    EXPECT_TRUE(isSame(currentAction(), before));
}

TEST(GuardedMapping, HasNoRoomForAThirdView) {
    CutFile file;
    irsdk::GuardedMapping first;
    irsdk::GuardedMapping second;
    irsdk::GuardedMapping third;
    ASSERT_TRUE(first.map(file.descriptor(), kPage));
    ASSERT_TRUE(second.map(file.descriptor(), kPage));

    EXPECT_FALSE(third.map(file.descriptor(), kPage));
    EXPECT_EQ(third.data(), nullptr);
    EXPECT_FALSE(third.isIntact());
}

TEST(GuardedMapping, RefusesWhatCannotBeMapped) {
    irsdk::GuardedMapping mapping;

    EXPECT_FALSE(mapping.map(-1, kPage));
    EXPECT_FALSE(mapping.isIntact());
    mapping.unmap();
}

/** Runs `act` in a child, since a bus error that is nobody's ends the process. */
template <typename Act>
int statusOfChild(Act act) {
    const pid_t child = fork();
    if (child == 0) {
        act();
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return status;
}

bool endedByBusError(int status) {
    return WIFSIGNALED(status) && WTERMSIG(status) == SIGBUS;
}

/** Reads a page that its file no longer has, outside every guarded view. */
void readMissingPage() {
    CutFile file;
    void* view = mmap(nullptr, kPage, PROT_READ, MAP_SHARED, file.descriptor(), 0);
    file.resize(0);
    static_cast<void>(*static_cast<const volatile char*>(view));
}

void setHandler(void (*handler)(int)) {
    struct sigaction action {};
    action.sa_handler = handler;
    sigaction(SIGBUS, &action, nullptr);
}

constexpr int kHandled = 7;  // exit status of a child whose own handler ran

void exitHandled(int /*signal*/) {
    _exit(kHandled);
}

void exitHandledWithInfo(int /*signal*/, siginfo_t* info, void* /*context*/) {
    _exit(info->si_addr != nullptr ? kHandled : 0);
}

bool endedByHandler(int status) {
    return WIFEXITED(status) && WEXITSTATUS(status) == kHandled;
}

TEST(GuardedMapping, LeavesForeignFaultsToTheSystem) {
    CutFile file;
    irsdk::GuardedMapping mapping;

    EXPECT_TRUE(endedByBusError(statusOfChild([&] {
        setHandler(SIG_DFL);
        static_cast<void>(mapping.map(file.descriptor(), kPage));
        readMissingPage();
    })));
    EXPECT_TRUE(endedByBusError(statusOfChild([&] {
        setHandler(SIG_IGN);
        static_cast<void>(mapping.map(file.descriptor(), kPage));
        readMissingPage();
    }))) << "a fault cannot be ignored";
}

TEST(GuardedMapping, LeavesForeignFaultsToTheHandlerThatWasThere) {
    CutFile file;
    irsdk::GuardedMapping mapping;

    EXPECT_TRUE(endedByHandler(statusOfChild([&] {
        setHandler(exitHandled);
        static_cast<void>(mapping.map(file.descriptor(), kPage));
        readMissingPage();
    })));
    EXPECT_TRUE(endedByHandler(statusOfChild([&] {
        struct sigaction action {};
        action.sa_sigaction = exitHandledWithInfo;
        action.sa_flags = SA_SIGINFO;
        sigaction(SIGBUS, &action, nullptr);
        static_cast<void>(mapping.map(file.descriptor(), kPage));
        readMissingPage();
    })));
}

TEST(GuardedMapping, LeavesSignalsOfProcessesAsTheyWere) {
    CutFile file;
    irsdk::GuardedMapping mapping;

    EXPECT_EQ(statusOfChild([&] {
                  setHandler(SIG_IGN);
                  static_cast<void>(mapping.map(file.descriptor(), kPage));
                  raise(SIGBUS);
              }),
              0);
    EXPECT_TRUE(endedByBusError(statusOfChild([&] {
        setHandler(SIG_DFL);
        static_cast<void>(mapping.map(file.descriptor(), kPage));
        raise(SIGBUS);
    })));
}

TEST(GuardedMapping, BelievesNoAddressThatAProcessSends) {
    CutFile file;
    irsdk::GuardedMapping mapping;

    EXPECT_EQ(statusOfChild([&] {
                  setHandler(SIG_IGN);
                  static_cast<void>(mapping.map(file.descriptor(), kPage));
                  siginfo_t info{};
                  info.si_code = SI_QUEUE;
                  info.si_addr = const_cast<char*>(mapping.data());
                  syscall(SYS_rt_sigqueueinfo, getpid(), SIGBUS, &info);
                  _exit(mapping.isIntact() ? 0 : 1);
              }),
              0);
}

TEST(GuardedMapping, LeavesAHandlerOnTopWhereItIs) {
    CutFile file;
    irsdk::GuardedMapping mapping;

    EXPECT_EQ(statusOfChild([&] {
                  static_cast<void>(mapping.map(file.descriptor(), kPage));
                  setHandler(exitHandled);
                  mapping.unmap();
                  const bool stayed = currentAction().sa_handler == exitHandled;
                  static_cast<void>(mapping.map(file.descriptor(), kPage));
                  const bool stillThere = currentAction().sa_handler == exitHandled;
                  _exit(stayed && stillThere ? 0 : 1);
              }),
              0);
}

TEST(GuardedMapping, ComesBackAfterAHandlerOnTopIsGone) {
    CutFile file;
    irsdk::GuardedMapping mapping;

    EXPECT_EQ(statusOfChild([&] {
                  setHandler(SIG_DFL);
                  static_cast<void>(mapping.map(file.descriptor(), kPage));
                  setHandler(SIG_DFL);
                  mapping.unmap();
                  static_cast<void>(mapping.map(file.descriptor(), kPage));
                  file.resize(0);
                  _exit(firstByte(mapping) == 0 && !mapping.isIntact() ? 0 : 1);
              }),
              0);
}

}  // namespace
