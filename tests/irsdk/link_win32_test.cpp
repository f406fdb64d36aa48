#include "tests/irsdk/linktest.h"
#include "tests/support/checkedsnapshot.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <limits>
#include <memory>
#include <thread>
#include <utility>
#include <windows.h>

// After windows.h, which it needs.
#include <sddl.h>

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr int kLong = 60'000;              // milliseconds, as a time-out that shall not pass
constexpr std::chrono::seconds kSoon{30};  // far less than that
constexpr milliseconds kShortWait{100};
constexpr milliseconds kAlmostShortWait{90};  // clocks of different kinds round differently
constexpr std::int32_t kHuge = std::numeric_limits<std::int32_t>::max();

std::size_t pageSize() {
    SYSTEM_INFO system{};
    GetSystemInfo(&system);
    return system.dwPageSize;
}

std::size_t inWholePages(std::size_t bytes) {
    const std::size_t page = pageSize();
    return (bytes + page - 1) / page * page;
}

// A mapping tells its size in whole pages only; what lies behind the block is there, and zero.

class WindowsBlock : public LinkTest {
protected:
    /** Descriptions of variables that the link finds in a table that says to be endless. */
    std::size_t entriesInEndlessTable(std::size_t at) {
        publisher.poke(offsetof(irsdk_header, varHeaderOffset), static_cast<std::int32_t>(at));
        publisher.poke(offsetof(irsdk_header, numVars), kHuge);
        std::vector<irsdk_varHeader> table;
        EXPECT_TRUE(irsdk_copyVarHeaders(table));
        return table.size();
    }
};

TEST_P(WindowsBlock, EndsWithItsLastPage) {
    const std::size_t mapped = inWholePages(block.bytes().size());
    ASSERT_NE(mapped, block.bytes().size()) << "else nothing is rounded";
    openAtTick10();

    for (const std::size_t entries : {1U, 2U}) {
        const std::size_t start = mapped - entries * sizeof(irsdk_varHeader);
        EXPECT_EQ(entriesInEndlessTable(start), entries);
        EXPECT_EQ(entriesInEndlessTable(start + 1), entries - 1);
    }
    publisher.poke(offsetof(irsdk_header, bufferLength), 16);
    publisher.poke(bufferOffsetField(1), static_cast<std::int32_t>(mapped - 16));
    EXPECT_NE(irsdk_getData(1), nullptr);
    publisher.poke(bufferOffsetField(1), static_cast<std::int32_t>(mapped - 15));
    EXPECT_EQ(irsdk_getData(1), nullptr);
}

TEST_P(WindowsBlock, OfWholePagesEndsWhereItEnds) {
    constexpr std::size_t kPages = 3;
    std::vector<char> bytes = block.bytes();
    bytes.resize(kPages * pageSize());
    publisher.command("block " + testsupport::toHex(bytes));
    publisher.createEvent();
    ASSERT_TRUE(irsdk_startup());

    EXPECT_EQ(entriesInEndlessTable(bytes.size() - sizeof(irsdk_varHeader)), 1U);
    EXPECT_EQ(entriesInEndlessTable(bytes.size() - sizeof(irsdk_varHeader) + 1), 0U);
    EXPECT_EQ(entriesInEndlessTable(bytes.size() + 1), 0U);
}

TEST_P(WindowsBlock, WithoutAZeroEndsItsTextWithTheMapping) {
    const std::size_t mapped = inWholePages(block.bytes().size());
    openAtTick10();
    constexpr std::size_t kLength = 8;
    std::vector<char> bytes(mapped);
    std::fill(bytes.end() - kLength, bytes.end(), 'x');
    irsdk_shutdown();
    publisher.command("unlink");
    std::memcpy(bytes.data(), block.bytes().data(), sizeof(irsdk_header));
    publisher.command("block " + testsupport::toHex(bytes));
    publisher.poke(offsetof(irsdk_header, sessionInfoOffset),
                   static_cast<std::int32_t>(mapped - kLength));
    ASSERT_TRUE(irsdk_startup());

    std::string text;
    int update = 0;
    EXPECT_TRUE(irsdk_copySessionInfoStr(text, update));
    EXPECT_EQ(text, std::string(kLength, 'x'));
    EXPECT_EQ(irsdk_getSessionInfoStr(), nullptr) << "a pointer would promise a zero";
}

TEST_P(WindowsBlock, IsMappedForReadingAlone) {
    openAtTick10();
    MEMORY_BASIC_INFORMATION region{};
    ASSERT_NE(VirtualQuery(irsdk_getHeader(), &region, sizeof region), 0U);

    EXPECT_EQ(region.Protect, static_cast<DWORD>(PAGE_READONLY));
    EXPECT_EQ(region.AllocationProtect, static_cast<DWORD>(PAGE_READONLY));
    EXPECT_EQ(region.AllocationBase, static_cast<const void*>(irsdk_getHeader()));
}

RATAIP_IN_BOTH_PLACES(WindowsBlock);

// Nobody says of which kind the simulator's event is; the link works with both, and with neither.

class WindowsEvent : public LinkToOtherProcessTest {
protected:
    void publishWith(const std::string& event) {
        publisher.publishBlock(block);
        publisher.command(event);
        publisher.completeChecked(0, 10);
    }

    void openWith(const std::string& event) {
        publishWith(event);
        ASSERT_TRUE(irsdk_startup());
        ASSERT_FALSE(takes());
    }

    bool waits(int timeOut) {
        const auto start = Clock::now();
        const bool result = irsdk_waitForDataReady(timeOut, snapshot.data(), length());
        waited = Clock::now() - start;
        return result;
    }

    Clock::duration waited{};
};

TEST_F(WindowsEvent, LeftSignalledDoesNotEndTheFirstWaitOfAConnection) {
    publishWith("event");
    publisher.command("signal");
    const TicksToCome ticks(publisher, 11);

    EXPECT_TRUE(waits(kLong)) << "the wait for tick 11, after tick 10 was noted as the start";
    EXPECT_GE(testsupport::checkedTick(snapshot.data()), 11);
    EXPECT_LT(waited, kSoon);
}

TEST_F(WindowsEvent, LeftSignalledEndsOneLaterWaitAtMost) {
    openWith("event");
    publisher.command("signal");

    EXPECT_FALSE(waits(kLong)) << "the signal that was left over";
    EXPECT_LT(waited, kSoon);
    const TicksToCome ticks(publisher, 11);
    EXPECT_TRUE(waits(kLong));
    EXPECT_GE(testsupport::checkedTick(snapshot.data()), 11);
}

TEST_F(WindowsEvent, PulsedWhileTheLinkWaitsEndsTheWait) {
    openWith("event manual");
    const TicksToCome ticks(publisher, 11);

    EXPECT_TRUE(waits(kLong));
    EXPECT_LT(waited, kSoon);
    EXPECT_GE(testsupport::checkedTick(snapshot.data()), 11);
}

TEST_F(WindowsEvent, PulsedWhileTheLinkConnectsEndsTheWait) {
    publishWith("event manual");
    const TicksToCome ticks(publisher, 11);

    EXPECT_TRUE(waits(kLong));
    EXPECT_LT(waited, kSoon);
}

TEST_F(WindowsEvent, PulsedWhileNobodyWaitsIsNoLoss) {
    openWith("event manual");
    publisher.completeChecked(1, 11);

    EXPECT_TRUE(waits(kLong)) << "the look before the wait";
    EXPECT_LT(waited, kSoon);
}

TEST_F(WindowsEvent, PulsedWhileNobodyWaitsLeavesNoSignal) {
    openWith("event manual");
    publisher.command("signal");

    EXPECT_FALSE(waits(static_cast<int>(kShortWait.count())));
    EXPECT_GE(waited, kAlmostShortWait);
}

TEST_F(WindowsEvent, NeverSignalledInTimeLetsTheLookAfterTheWaitFindTheData) {
    constexpr int kAttempts = 20;  // on a busy machine the tick may come before or after the wait
    for (const char* event : {"event", "event manual"}) {
        irsdk_shutdown();
        openWith(event);
        // The signal of tick 10, if one was left.
        static_cast<void>(waits(1));
        bool foundAtTheEnd = false;
        for (int tick = 11; !foundAtTheEnd && tick < 11 + kAttempts; ++tick) {
            std::thread writer([this, tick] {
                std::this_thread::sleep_for(kShortWait / 2);
                publisher.setTick(1, tick);
            });
            const bool result = waits(static_cast<int>(kShortWait.count()));
            foundAtTheEnd = result && waited >= kAlmostShortWait;
            writer.join();
            static_cast<void>(takes());  // a tick that came after the wait
        }

        EXPECT_TRUE(foundAtTheEnd) << event;
        publisher.setTick(1, 0);
        publisher.command("unlink event");
    }
}

TEST_F(WindowsEvent, OfTheOtherKindIsOpenedAfterAReconnection) {
    openWith("event");
    irsdk_shutdown();
    publisher.command("event manual");
    ASSERT_TRUE(irsdk_startup());
    ASSERT_FALSE(takes());
    const TicksToCome ticks(publisher, 11);

    EXPECT_TRUE(waits(kLong));
}

// A descriptor that grants everybody what it names and nothing more, its owner included.

struct LocalMemory {
    void operator()(void* memory) const { LocalFree(memory); }
};

class Permission {
public:
    explicit Permission(DWORD rights) {
        constexpr std::size_t kRoom = 64;
        wchar_t text[kRoom];
        std::swprintf(text, kRoom, L"D:P(A;;0x%lx;;;WD)(A;;0x%lx;;;OW)", rights, rights);
        PSECURITY_DESCRIPTOR descriptor = nullptr;
        ConvertStringSecurityDescriptorToSecurityDescriptorW(text, SDDL_REVISION_1, &descriptor,
                                                             nullptr);
        m_descriptor.reset(descriptor);
        m_attributes.nLength = sizeof m_attributes;
        m_attributes.lpSecurityDescriptor = descriptor;
    }

    [[nodiscard]] bool isValid() const { return m_descriptor != nullptr; }
    [[nodiscard]] SECURITY_ATTRIBUTES* attributes() { return &m_attributes; }

private:
    std::unique_ptr<void, LocalMemory> m_descriptor;
    SECURITY_ATTRIBUTES m_attributes{};
};

class Handle {
public:
    explicit Handle(HANDLE handle) : m_handle(handle) {}
    ~Handle() {
        if (m_handle != nullptr) {
            CloseHandle(m_handle);
        }
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    [[nodiscard]] HANDLE get() const { return m_handle; }
    [[nodiscard]] bool isOpen() const { return m_handle != nullptr; }

private:
    HANDLE m_handle;
};

class WindowsRights : public ::testing::Test {
protected:
    void SetUp() override { irsdk_shutdown(); }
    void TearDown() override { irsdk_shutdown(); }

    /** Publishes a block and an event that grant no more than these rights. */
    void publish(DWORD blockRights, DWORD eventRights) {
        Permission onBlock(blockRights);
        Permission onEvent(eventRights);
        ASSERT_TRUE(onBlock.isValid());
        ASSERT_TRUE(onEvent.isValid());
        const auto size = static_cast<DWORD>(testsupport::TestBlock().bytes().size());
        mapping = std::make_unique<Handle>(CreateFileMappingW(INVALID_HANDLE_VALUE,
                                                              onBlock.attributes(), PAGE_READWRITE,
                                                              0, size, IRSDK_MEMMAPFILENAME));
        event = std::make_unique<Handle>(
            CreateEventW(onEvent.attributes(), FALSE, FALSE, IRSDK_DATAVALIDEVENTNAME));
        ASSERT_TRUE(mapping->isOpen());
        ASSERT_TRUE(event->isOpen());
    }

    std::unique_ptr<Handle> mapping;
    std::unique_ptr<Handle> event;
};

TEST_F(WindowsRights, AreThoseToReadTheBlockAndToWaitForTheEvent) {
    publish(FILE_MAP_READ, SYNCHRONIZE);
    const Handle writable(OpenFileMappingW(FILE_MAP_WRITE, FALSE, IRSDK_MEMMAPFILENAME));
    const Handle settable(
        OpenEventW(EVENT_MODIFY_STATE | SYNCHRONIZE, FALSE, IRSDK_DATAVALIDEVENTNAME));
    ASSERT_FALSE(writable.isOpen()) << "else the rights asked for do not matter here";
    ASSERT_FALSE(settable.isOpen());

    EXPECT_TRUE(irsdk_startup()) << irsdk_errorText(irsdk_lastError());
    EXPECT_NE(irsdk_getHeader(), nullptr);
}

TEST_F(WindowsRights, ToReadThatAreMissingAreToldApartFromABlockThatIsMissing) {
    publish(FILE_MAP_WRITE, SYNCHRONIZE);

    EXPECT_FALSE(irsdk_startup());
    EXPECT_EQ(irsdk_lastError(), irsdk_Error::ForeignBlock);
}

TEST_F(WindowsRights, AreNotHandedToChildProcesses) {
    publish(FILE_MAP_READ, SYNCHRONIZE);
    const auto countInheritable = [] {
        // Handles are multiples of 4; those of a test lie low.
        constexpr std::uintptr_t kStep = 4;
        constexpr std::uintptr_t kLast = 4096;
        DWORD count = 0;
        for (std::uintptr_t value = kStep; value <= kLast; value += kStep) {
            DWORD flags = 0;
            if (GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags) != 0) {
                count += flags & HANDLE_FLAG_INHERIT;
            }
        }
        return count;
    };
    const DWORD before = countInheritable();
    ASSERT_TRUE(irsdk_startup());

    EXPECT_EQ(countInheritable(), before);
}

// The number of seconds as the system's own 64-bit clock tells it.
TEST(WindowsClock, Has64Bits) {
    FILETIME now{};
    GetSystemTimeAsFileTime(&now);
    constexpr std::uint64_t kTicksPerSecond = 10'000'000;
    constexpr std::uint64_t kSecondsTo1970 = 11'644'473'600;
    constexpr unsigned int kHalf = 32;
    const std::uint64_t ticks =
        (std::uint64_t{now.dwHighDateTime} << kHalf) | std::uint64_t{now.dwLowDateTime};
    const auto seconds = static_cast<std::int64_t>(ticks / kTicksPerSecond - kSecondsTo1970);

    EXPECT_LE(std::abs(irsdk::calendarSeconds() - seconds), 1);
    static_assert(sizeof(irsdk::calendarSeconds()) == sizeof(std::int64_t));
}

}  // namespace
