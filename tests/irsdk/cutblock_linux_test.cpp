#include "tests/irsdk/linktest.h"
#include "tests/support/checkedsnapshot.h"

#include <atomic>
#include <csignal>
#include <cstring>
#include <new>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

/**
 * A block that is cut off while the link reads it: at every place between two system calls of the
 * reader, which is a child that stops before and after each of its calls.
 */
class CutBlock : public LinkToOwnProcessTest {
protected:
    CutBlock() {
        constexpr int kLength = 10'000;
        block.setBufferLength(kLength);
        block.setSessionText(std::string(kLength, 'a'));
        snapshot.resize(static_cast<std::size_t>(block.snapshotLength()));
        void* shared = mmap(nullptr, sizeof(std::atomic<bool>), PROT_READ | PROT_WRITE,
                            MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        isCut = new (shared) std::atomic<bool>(false);
    }
    ~CutBlock() override { munmap(isCut, sizeof *isCut); }

    /**
     * Has a child read everything, and cuts the block off at `size` bytes at the stop of that
     * number. False when the child was at its end before.
     */
    bool readsWithACut(int stop, std::size_t size) {
        isCut->store(false);
        publisher.publish(block);
        publisher.completeChecked(0, 10);
        const pid_t reader = fork();
        if (reader == 0) {
            EXPECT_TRUE(irsdk_startup());
            EXPECT_FALSE(takes()) << "the starting point";
            EXPECT_EQ(ptrace(PTRACE_TRACEME, 0, nullptr, nullptr), 0);
            raise(SIGSTOP);
            readAll();
            _exit(HasFailure() ? 1 : 0);
        }
        int status = 0;
        waitpid(reader, &status, 0);
        publisher.completeChecked(1, kTick);
        for (int stops = 0; WIFSTOPPED(status); ++stops) {
            if (stops == stop) {
                publisher.command("truncate " + std::to_string(size));
                isCut->store(true);
            }
            const bool wentWell = WSTOPSIG(status) == SIGTRAP || stops == 0;
            EXPECT_TRUE(wentWell) << strsignal(WSTOPSIG(status));
            ptrace(wentWell ? PTRACE_SYSCALL : PTRACE_KILL, reader, nullptr, nullptr);
            waitpid(reader, &status, 0);
        }
        EXPECT_EQ(status, 0);
        return isCut->load();
    }

private:
    void readAll() {
        readHeader();
        readTable();
        readText();
        lookUp();
        readSnapshot();
        const bool wasCut = *isCut;
        EXPECT_TRUE(irsdk_isConnected() ? !wasCut && !isRefused : isCut->load());
    }

    /**
     * What is asked of the link is answered whole, or refused because of the cut. Once it was cut
     * off or a refusal has told so, there are refusals alone.
     */
    void note(bool isAnswered, bool wasCut) {
        if (isAnswered) {
            EXPECT_FALSE(wasCut || isRefused);
            return;
        }
        EXPECT_TRUE(*isCut);
        EXPECT_EQ(irsdk_lastError(), irsdk_Error::BlockShrunk);
        isRefused = true;
    }

    void readHeader() {
        const bool wasCut = *isCut;
        irsdk_header header{};
        note(irsdk_copyHeader(header), wasCut);
        EXPECT_EQ(header.numVars, isRefused ? 0 : block.header().numVars);
        EXPECT_EQ(header.bufferLength, isRefused ? 0 : block.header().bufferLength);
    }

    void readTable() {
        const bool wasCut = *isCut;
        std::vector<irsdk_varHeader> table;
        note(irsdk_copyVarHeaders(table), wasCut);
        EXPECT_EQ(table.size(), isRefused ? 0U : 3U);
        EXPECT_TRUE(table.empty() || std::memcmp(table.data(), block.varHeaders(),
                                                 table.size() * sizeof table[0]) == 0);
    }

    void readText() {
        const bool wasCut = *isCut;
        std::string text;
        int update = 0;
        note(irsdk_copySessionInfoStr(text, update), wasCut);
        EXPECT_TRUE(text == (isRefused ? "" : block.sessionText()));
        EXPECT_EQ(update, isRefused ? -1 : block.header().sessionInfoUpdate);
    }

    /** These need not ask for more of the block than they look at. */
    void lookUp() {
        const int index = irsdk_varNameToIndex("Gear");
        EXPECT_TRUE(index == 2 || (index == -1 && *isCut));
        const int counter = irsdk_getSessionInfoStrUpdate();
        EXPECT_TRUE(counter == block.header().sessionInfoUpdate || (counter == -1 && *isCut));
        EXPECT_TRUE(irsdk_getSessionInfoStr() != nullptr || *isCut);
        EXPECT_TRUE(irsdk_getData(1) != nullptr || *isCut);
        EXPECT_TRUE(irsdk_getVarHeaderPtr() != nullptr || *isCut);
        EXPECT_TRUE(irsdk_getVarHeaderEntry(0) != nullptr || *isCut);
    }

    void readSnapshot() {
        const bool wasCut = *isCut;
        const bool isTaken = takes();
        note(isTaken, wasCut);
        if (isTaken) {
            EXPECT_TRUE(testsupport::isUntorn(snapshot.data(), snapshot.size()));
            EXPECT_EQ(testsupport::checkedTick(snapshot.data()), kTick);
        }
    }

    static constexpr std::int32_t kTick = 11;

    std::atomic<bool>* isCut = nullptr;
    bool isRefused = false;
};

TEST_F(CutBlock, IsReadWholeOrNotAtAll) {
    constexpr int kFewestStops = 50;  // two for each call that reads something
    const std::size_t whole = block.bytes().size();
    const auto table = static_cast<std::size_t>(block.header().varHeaderOffset);
    const auto text = static_cast<std::size_t>(block.header().sessionInfoOffset);
    const auto newest = static_cast<std::size_t>(block.descriptor(1).bufferOffset);
    for (const std::size_t size : {std::size_t{0}, sizeof(irsdk_header) - 1, table + 200, text + 50,
                                   newest + 5000, whole - 1}) {
        int stop = 0;
        while (readsWithACut(stop, size)) {
            ASSERT_FALSE(HasFailure()) << size << ' ' << stop;
            ++stop;
        }
        EXPECT_GT(stop, kFewestStops) << size;
    }
}

}  // namespace
