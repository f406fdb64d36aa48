#include "tools/simulator/block.h"
#include "tools/simulator/clock.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstring>
#include <thread>
#include <vector>

using namespace simulator;

namespace {

/** A block in memory of this process, read as a client reads it. */
class PublishedBlock {
public:
    explicit PublishedBlock(const Options& options = {})
        : table(options),
          layout(table, options),
          words(layout.size / sizeof(std::int64_t)),
          memory(std::as_writable_bytes(std::span(words))),
          block(memory, layout, table),
          snapshot(table.bufferLength()) {}

    irsdk_header& header() { return *reinterpret_cast<irsdk_header*>(memory.data()); }

    irsdk_varBuf& descriptor(int index) {
        return reinterpret_cast<irsdk_varBuf*>(memory.data() + 48)[index];
    }

    std::string text() {
        return reinterpret_cast<char*>(memory.data() + header().sessionInfoOffset);
    }

    void publish(int value) {
        std::memset(snapshot.data(), value, snapshot.size());
        block.publish(snapshot);
    }

    VariableTable table;
    BlockLayout layout;
    std::vector<std::int64_t> words;
    std::span<std::byte> memory;
    Block block;
    std::vector<std::byte> snapshot;
};

}  // namespace

TEST(Block, HasAHeaderThatDescribesIt) {
    for (const int buffers : {1, 3, 4}) {
        Options options;
        options.bufferCount = buffers;
        PublishedBlock published(options);
        const irsdk_header& header = published.header();
        EXPECT_EQ(header.status, 0) << "before the first tick may be read";
        EXPECT_EQ(header.tickRate, kTicksPerSecond);
        EXPECT_EQ(header.numBuf, buffers);
        EXPECT_EQ(header.numVars, static_cast<int>(published.table.variables().size()));
        EXPECT_EQ(header.bufferLength, static_cast<int>(published.table.bufferLength()));
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

TEST(Block, HasTheVariableTableOfItsVariables) {
    PublishedBlock published;
    for (std::size_t index = 0; index < published.table.variables().size(); ++index) {
        irsdk_varHeader entry{};
        std::memcpy(
            &entry,
            published.memory.data() + published.header().varHeaderOffset + index * sizeof entry,
            sizeof entry);
        const Variable& variable = published.table.variables()[index];
        EXPECT_EQ(entry.type, variable.type);
        EXPECT_EQ(entry.offset, static_cast<int>(variable.offset));
        EXPECT_EQ(entry.count, variable.count);
        EXPECT_EQ(entry.countAsTime != 0, variable.countAsTime);
        EXPECT_EQ(variable.name, entry.name);
        EXPECT_EQ(variable.unit, entry.unit);
        EXPECT_EQ(variable.description, entry.desc);
    }
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
    Options options;
    options.bufferCount = 1;     // every write hits the buffer that is being read
    options.padBuffer = 400000;  // and takes its time
    PublishedBlock published(options);
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

TEST(Block, IsAsLargeAsEverWithTheUsualOptions) {
    Options other;
    other.bufferCount = 4;
    other.extraVariables = 100;
    EXPECT_EQ(PublishedBlock().layout.size, PublishedBlock(other).layout.size);
}

TEST(Block, MovesItsBuffersWhenPadded) {
    Options padded;
    padded.padBuffer = 4096;
    PublishedBlock usual;
    PublishedBlock moved(padded);
    EXPECT_NE(moved.header().bufferLength, usual.header().bufferLength);
    EXPECT_NE(moved.descriptor(0).bufferOffset, usual.descriptor(0).bufferOffset);
    EXPECT_NE(moved.descriptor(1).bufferOffset - moved.descriptor(0).bufferOffset,
              usual.descriptor(1).bufferOffset - usual.descriptor(0).bufferOffset);
}

TEST(Block, TakesOverMemoryOfAnEarlierRunWithoutShowingIt) {
    const Options options;
    PublishedBlock published;
    published.block.setRunning(true);
    published.block.showText("---\nold\n");
    published.publish(5);
    const std::int32_t counter = published.header().sessionInfoUpdate;
    Block next(published.memory, published.layout, published.table);
    EXPECT_EQ(published.header().status, 0);
    EXPECT_LT(published.descriptor(1).tickCount, 0);
    next.showText("---\nnew\n");
    EXPECT_NE(published.header().sessionInfoUpdate, counter);
}
