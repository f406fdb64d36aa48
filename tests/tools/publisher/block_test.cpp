#include "tools/publisher/block.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstring>
#include <thread>
#include <vector>

namespace {

using publisher::BlockFacts;
using publisher::BlockLayout;
using publisher::BlockWriter;

std::vector<irsdk_varHeader> someVariables() {
    std::vector<irsdk_varHeader> table(2);
    table[0].name[0] = 'A';
    table[1].unit[0] = 'm';
    return table;
}

/** A block in memory of this process, read as a client reads it. */
class PublishedBlock {
public:
    explicit PublishedBlock(const BlockFacts& facts = {.bufferLength = 272})
        : layout(facts, table.size()),
          words(layout.size / sizeof(std::int64_t)),
          memory(std::as_writable_bytes(std::span(words))),
          block(memory, layout, table),
          snapshot(facts.bufferLength) {}

    irsdk_header& header() { return publisher::headerOf(memory); }
    irsdk_varBuf& descriptor(int index) { return publisher::descriptorOf(memory, index); }

    std::string text() {
        return reinterpret_cast<char*>(memory.data() + header().sessionInfoOffset);
    }

    void publish(int value) {
        std::memset(snapshot.data(), value, snapshot.size());
        block.publish(snapshot);
    }

    std::vector<irsdk_varHeader> table = someVariables();
    BlockLayout layout;
    std::vector<std::int64_t> words;
    std::span<std::byte> memory;
    BlockWriter block;
    std::vector<std::byte> snapshot;
};

}  // namespace

TEST(Block, HasAHeaderThatDescribesIt) {
    for (const int buffers : {1, 3, 4}) {
        PublishedBlock published({.tickRate = 30, .bufferCount = buffers, .bufferLength = 100});
        const irsdk_header& header = published.header();
        EXPECT_EQ(header.status, 0) << "before the first tick may be read";
        EXPECT_EQ(header.tickRate, 30);
        EXPECT_EQ(header.numBuf, buffers);
        EXPECT_EQ(header.numVars, 2);
        EXPECT_EQ(header.bufferLength, 100);
        int end = header.sessionInfoOffset + header.sessionInfoLength;
        for (int index = 0; index < buffers; ++index) {
            EXPECT_GE(published.descriptor(index).bufferOffset, end);
            end = published.descriptor(index).bufferOffset + header.bufferLength;
        }
        EXPECT_LE(static_cast<std::size_t>(end), published.layout.size);
        published.block.setRunning(true);
        EXPECT_EQ(header.status, irsdk_stConnected);
    }
}

TEST(Block, HasItsVariableTable) {
    PublishedBlock published;
    EXPECT_EQ(std::memcmp(published.memory.data() + published.header().varHeaderOffset,
                          published.table.data(), 2 * sizeof(irsdk_varHeader)),
              0);
}

TEST(Block, PutsEachSnapshotIntoTheNextBufferWithTheNextTick) {
    PublishedBlock published;
    for (int tick = 1; tick <= 10; ++tick) {
        published.publish(tick);
        int newest = 0;
        for (int index = 1; index < 3; ++index) {
            if (published.descriptor(index).tickCount > published.descriptor(newest).tickCount) {
                newest = index;
            }
        }
        EXPECT_EQ(published.descriptor(newest).tickCount, tick);
        EXPECT_EQ(published.block.tickCount(), tick);
        const auto* payload = published.memory.data() + published.descriptor(newest).bufferOffset;
        EXPECT_EQ(payload[0], static_cast<std::byte>(tick));
        EXPECT_EQ(payload[published.header().bufferLength - 1], static_cast<std::byte>(tick));
    }
}

TEST(Block, KeepsTheSnapshotsBeforeTheNewestOne) {
    PublishedBlock published;
    for (int tick = 1; tick <= 10; ++tick) {
        published.publish(tick);
        int filled = 0;
        for (int index = 0; index < 3; ++index) {
            const irsdk_varBuf& buffer = published.descriptor(index);
            if (buffer.tickCount > 0) {
                ++filled;
                EXPECT_GT(buffer.tickCount, tick - 3);
                EXPECT_EQ(published.memory[static_cast<std::size_t>(buffer.bufferOffset)],
                          static_cast<std::byte>(buffer.tickCount));
            }
        }
        EXPECT_EQ(filled, std::min(tick, 3));
    }
}

TEST(Block, NeverHandsOutATornSnapshotToAReaderThatLooksTwice) {
    // Every write hits the buffer that is being read, and takes its time.
    PublishedBlock published({.bufferCount = 1, .bufferLength = 400'000});
    std::atomic<bool> done = false;
    std::thread writer([&] {
        for (int value = 1; !done; ++value) {
            published.publish(value);
            std::this_thread::sleep_for(std::chrono::microseconds(50));
        }
    });
    const auto tick = [&] {
        return std::atomic_ref(published.descriptor(0).tickCount).load(std::memory_order_acquire);
    };
    // A snapshot has the same value in all its bytes.
    const auto isWhole = [](const std::vector<std::byte>& copy) {
        return std::memcmp(copy.data(), copy.data() + 1, copy.size() - 1) == 0;
    };
    constexpr int kEnough = 500;
    int taken = 0;
    int refused = 0;
    int torn = 0;
    std::vector<std::byte> copy(published.snapshot.size());
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while ((taken < kEnough || refused < kEnough) && std::chrono::steady_clock::now() < end) {
        const std::int32_t before = tick();
        if (before < 1) {
            std::this_thread::yield();
            continue;
        }
        std::memcpy(copy.data(), published.memory.data() + published.descriptor(0).bufferOffset,
                    copy.size());
        std::atomic_thread_fence(std::memory_order_acquire);
        if (tick() != before) {
            ++refused;
            continue;
        }
        ++taken;
        torn += isWhole(copy) ? 0 : 1;
    }
    done = true;
    writer.join();
    EXPECT_EQ(torn, 0);
    EXPECT_GT(taken, 0);
    EXPECT_GT(refused, 0);
}

TEST(Block, ShowsEachTextWholeUnderANewCounter) {
    PublishedBlock published;
    const std::int32_t before = published.header().sessionInfoUpdate;
    published.block.showText("---\nfirst\n");
    EXPECT_EQ(published.text(), "---\nfirst\n");
    const std::int32_t first = published.header().sessionInfoUpdate;
    EXPECT_NE(first, before);
    const char* shown =
        reinterpret_cast<char*>(published.memory.data() + published.header().sessionInfoOffset);
    published.block.showText("---\n2\n");
    EXPECT_EQ(published.text(), "---\n2\n");
    EXPECT_NE(published.header().sessionInfoUpdate, first);
    EXPECT_STREQ(shown, "---\nfirst\n") << "a reader may still be copying it";
}

TEST(Block, CutsATextThatIsTooLongAtTheEndOfALine) {
    PublishedBlock published;
    std::string text = "---\n";
    while (text.size() < 300000) {
        text += " Key: a value of some length\n";
    }
    published.block.showText(text);
    const std::string shown = published.text();
    EXPECT_LT(shown.size(), static_cast<std::size_t>(published.header().sessionInfoLength));
    EXPECT_EQ(shown.back(), '\n');
    EXPECT_EQ(text.rfind(shown, 0), 0U);
}

TEST(Block, IsNoSmallerThanItShallBe) {
    constexpr std::size_t kLeast = std::size_t{1024} * 1024;
    EXPECT_EQ(BlockLayout({.bufferLength = 100, .leastSize = kLeast}, 2).size, kLeast);
    EXPECT_GT(BlockLayout({.bufferLength = kLeast, .leastSize = kLeast}, 2).size, kLeast);
}

TEST(Block, MovesItsBuffersWhenPadded) {
    const BlockLayout usual({.bufferLength = 272}, 2);
    const BlockLayout moved({.bufferLength = 272, .padding = 4096}, 2);
    EXPECT_NE(moved.firstBufferOffset, usual.firstBufferOffset);
    EXPECT_NE(moved.bufferSpacing, usual.bufferSpacing);
}

TEST(Block, ShowsTheTextInItsOnePlaceWhereItHasNoOther) {
    PublishedBlock published({.bufferLength = 16, .textRoom = 64, .textAreas = 1});
    const std::int32_t offset = published.header().sessionInfoOffset;
    for (const char* text : {"---\nfirst\n", "---\n2\n"}) {
        published.block.showText(text);
        EXPECT_EQ(published.header().sessionInfoOffset, offset);
        EXPECT_EQ(published.text(), text);
    }
}

TEST(Block, TakesOverMemoryOfAnEarlierRunWithoutShowingIt) {
    PublishedBlock published;
    published.block.setRunning(true);
    published.block.showText("---\nold\n");
    published.publish(5);
    const std::int32_t counter = published.header().sessionInfoUpdate;
    BlockWriter next(published.memory, published.layout, published.table);
    EXPECT_EQ(published.header().status, 0);
    EXPECT_LT(published.descriptor(1).tickCount, 0);
    next.showText("---\nnew\n");
    EXPECT_NE(published.header().sessionInfoUpdate, counter);
}
