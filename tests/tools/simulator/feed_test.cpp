#include "tools/simulator/feed.h"

#include "tests/tools/simulator/shorttrack.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

using namespace simulator;

namespace {

/** A feed that publishes into this process's memory. */
class MemoryFeed {
public:
    explicit MemoryFeed(const Options& options)
        : feed(options), words(feed.blockSize() / sizeof(std::int64_t)) {
        feed.attach(memory());
    }

    std::span<std::byte> memory() { return std::as_writable_bytes(std::span(words)); }
    const irsdk_header& header() { return *reinterpret_cast<irsdk_header*>(memory().data()); }

    bool sameBytes(MemoryFeed& other) { return words == other.words; }

    Feed feed;
    std::vector<std::int64_t> words;
};

}  // namespace

TEST(Feed, PublishesTheSameBytesAtEveryTickForTheSameSeed) {
    MemoryFeed first(shortTrack());
    MemoryFeed second(shortTrack());
    for (int tick = 0; tick < 3000; ++tick) {
        first.feed.publishNextTick();
        second.feed.publishNextTick();
        ASSERT_TRUE(first.sameBytes(second)) << tick;
    }
}

TEST(Feed, ShowsTheTextBeforeTheFirstSnapshot) {
    MemoryFeed memory(shortTrack());
    EXPECT_EQ(memory.header().status, irsdk_stConnected);
    EXPECT_EQ(memory.feed.tickCount(), 0);
    const std::string text =
        reinterpret_cast<char*>(memory.memory().data() + memory.header().sessionInfoOffset);
    EXPECT_EQ(text.rfind("---\n", 0), 0U);
    memory.feed.publishNextTick();
    EXPECT_EQ(memory.feed.tickCount(), 1);
}

TEST(Feed, RewritesTheTextOnlyWhenSomethingInItChanged) {
    MemoryFeed memory(shortTrack());
    int updates = 0;
    std::int32_t last = memory.header().sessionInfoUpdate;
    for (int tick = 0; tick < 6000; ++tick) {
        const int revision = memory.feed.world().revision();
        memory.feed.publishNextTick();
        const bool updated = memory.header().sessionInfoUpdate != last;
        EXPECT_EQ(updated, memory.feed.world().revision() != revision);
        updates += updated ? 1 : 0;
        last = memory.header().sessionInfoUpdate;
    }
    EXPECT_GT(updates, 10);
    EXPECT_LT(updates, 200);
}

TEST(Feed, RewritesTheTextInEveryTickWhenAsked) {
    Options options = shortTrack();
    options.sessionInfoEveryTick = true;
    MemoryFeed memory(options);
    for (int tick = 0; tick < 10; ++tick) {
        const std::int32_t last = memory.header().sessionInfoUpdate;
        memory.feed.publishNextTick();
        EXPECT_NE(memory.header().sessionInfoUpdate, last);
    }
}

TEST(Feed, ClearsAndSetsTheStatusBit) {
    MemoryFeed memory(shortTrack());
    memory.feed.setRunning(false);
    EXPECT_EQ(memory.header().status & irsdk_stConnected, 0);
    memory.feed.setRunning(true);
    EXPECT_EQ(memory.header().status & irsdk_stConnected, irsdk_stConnected);
}

TEST(Feed, PlaysAReplayAtItsSpeed) {
    Options options = shortTrack();
    options.replay = true;
    options.cars = 1;
    MemoryFeed memory(options);
    bool paused = false;
    bool fast = false;
    for (int snapshot = 0; snapshot < 40000; ++snapshot) {
        const Tick before = memory.feed.world().tick();
        memory.feed.publishNextTick();
        const int speed = memory.feed.playback().speed();
        ASSERT_EQ(memory.feed.world().tick() - before, speed);
        paused = paused || speed == 0;
        fast = fast || speed > 1;
    }
    EXPECT_TRUE(paused);
    EXPECT_TRUE(fast);
    EXPECT_EQ(memory.feed.tickCount(), 40000);
}

TEST(Feed, NeedsABlockAsLargeAsEverWithTheUsualOptions) {
    Options other;
    other.bufferCount = 4;
    other.extraVariables = 100;
    EXPECT_EQ(Feed(Options()).blockSize(), Feed(other).blockSize());
}

TEST(Feed, HasLongerBuffersElsewhereWhenPadded) {
    Options padded = shortTrack();
    padded.padBuffer = 4096;
    MemoryFeed usual(shortTrack());
    MemoryFeed moved(padded);
    EXPECT_NE(moved.header().bufferLength, usual.header().bufferLength);
    EXPECT_NE(moved.header().varBuf[0].bufferOffset, usual.header().varBuf[0].bufferOffset);
}

TEST(Feed, PublishesAsManyBuffersAsAskedFor) {
    Options options = shortTrack();
    options.bufferCount = 4;
    EXPECT_EQ(MemoryFeed(options).header().numBuf, 4);
}
