#include "irsdk/blockmemory.h"
#include "tests/irsdk/linktest.h"
#include "tests/support/scarcememory.h"

#include <limits>
#include <tuple>

namespace {

constexpr std::int32_t kHuge = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kLowest = std::numeric_limits<std::int32_t>::min();

TEST(BlockMemory, HoldsWhatLiesInside) {
    const std::vector<char> bytes(100);
    const irsdk::BlockMemory memory(bytes.data(), bytes.size());

    EXPECT_TRUE(memory.holds(0, 100));
    EXPECT_TRUE(memory.holds(99, 1));
    EXPECT_TRUE(memory.holds(100, 0));
    EXPECT_FALSE(memory.holds(100, 1));
    EXPECT_FALSE(memory.holds(0, 101));
    EXPECT_FALSE(memory.holds(101, 0));
    EXPECT_FALSE(memory.holds(-1, 1));
    EXPECT_FALSE(memory.holds(1, -1));
    EXPECT_FALSE(memory.holds(kHuge, kHuge));
    EXPECT_FALSE(memory.holds(kLowest, kHuge));
    EXPECT_FALSE(memory.holds(std::numeric_limits<std::int64_t>::max(),
                              std::numeric_limits<std::int64_t>::max()));
}

TEST(BlockMemory, AnEmptyOneHoldsNothing) {
    const irsdk::BlockMemory memory;

    EXPECT_EQ(memory.size(), 0);
    EXPECT_FALSE(memory.holds(0, 1));
    EXPECT_EQ(memory.entriesHeld(0, 1, 144), 0);
}

TEST(BlockMemory, CountsTheEntriesThatFit) {
    const std::vector<char> bytes(100);
    const irsdk::BlockMemory memory(bytes.data(), bytes.size());

    EXPECT_EQ(memory.entriesHeld(0, 5, 10), 5);
    EXPECT_EQ(memory.entriesHeld(0, 11, 10), 10);
    EXPECT_EQ(memory.entriesHeld(91, 1, 10), 0);
    EXPECT_EQ(memory.entriesHeld(90, kHuge, 10), 1);
    EXPECT_EQ(memory.entriesHeld(-1, 5, 10), 0);
    EXPECT_EQ(memory.entriesHeld(101, 5, 10), 0);
    EXPECT_EQ(memory.entriesHeld(0, -5, 10), 0);
    EXPECT_EQ(memory.entriesHeld(0, 0, 10), 0);
}

struct BrokenField {
    const char* name;
    std::size_t offset;
    std::int32_t value;
};

std::vector<BrokenField> fieldsThatLeaveNoData() {
    return {
        {"numBufHuge", offsetof(irsdk_header, numBuf), kHuge},
        {"numBufJustTooMany", offsetof(irsdk_header, numBuf), 100'000'000},
        {"bufferLengthZero", offsetof(irsdk_header, bufferLength), 0},
        {"bufferLengthNegative", offsetof(irsdk_header, bufferLength), -1},
        {"bufferLengthLowest", offsetof(irsdk_header, bufferLength), kLowest},
        {"bufferLengthHuge", offsetof(irsdk_header, bufferLength), kHuge},
        {"bufferOffsetNegative", bufferOffsetField(1), -1},
        {"bufferOffsetLowest", bufferOffsetField(1), kLowest},
        {"bufferOffsetHuge", bufferOffsetField(1), kHuge},
    };
}

class BlockWithoutData
    : public LinkFixture,
      public ::testing::WithParamInterface<std::tuple<testsupport::Publisher::Where, BrokenField>> {
protected:
    BlockWithoutData() : LinkFixture(std::get<0>(GetParam())) {}
};

TEST_P(BlockWithoutData, HandsNothingOutAndSaysWhy) {
    openAtTick10();
    publisher.completeChecked(1, 11);
    const BrokenField& field = std::get<1>(GetParam());
    const std::string good = publisher.command("peek " + std::to_string(field.offset));
    publisher.poke(field.offset, field.value);
    std::vector<char> large(1 << 20, '#');

    EXPECT_FALSE(irsdk_getNewData(large.data(), static_cast<int>(large.size())));
    EXPECT_EQ(irsdk_lastError(), irsdk_Error::BlockInvalid);
    EXPECT_FALSE(irsdk_getNewData(large.data()));
    EXPECT_FALSE(irsdk_getNewData(nullptr));
    EXPECT_EQ(large, std::vector<char>(1 << 20, '#'));

    publisher.poke(field.offset, std::stoi(good));
    EXPECT_TRUE(takes()) << "the tick is handed out once the block is sound again";
}

INSTANTIATE_TEST_SUITE_P(
    Published, BlockWithoutData,
    ::testing::Combine(::testing::Values(testsupport::Publisher::Where::ThisProcess,
                                         testsupport::Publisher::Where::OtherProcess),
                       ::testing::ValuesIn(fieldsThatLeaveNoData())),
    [](const auto& row) {
        return std::string(std::get<1>(row.param).name) +
               (std::get<0>(row.param) == testsupport::Publisher::Where::ThisProcess
                    ? "ThisProcess"
                    : "OtherProcess");
    });

class Bounds : public LinkTest {};

TEST_P(Bounds, ABufferThatIsNotTheNewestMayPointAnywhere) {
    openAtTick10();
    publisher.poke(bufferOffsetField(2), kHuge);
    publisher.completeChecked(1, 11);

    EXPECT_TRUE(takes());
}

TEST_P(Bounds, TheCopiedHeaderCountsOnlyEntriesInside) {
    openAtTick10();
    irsdk_header header{};
    const auto numVars = offsetof(irsdk_header, numVars);

    publisher.poke(numVars, kHuge);
    ASSERT_TRUE(irsdk_copyHeader(header));
    EXPECT_GE(header.numVars, 3);
    EXPECT_LT(header.numVars, 1000);

    publisher.poke(numVars, -7);
    ASSERT_TRUE(irsdk_copyHeader(header));
    EXPECT_EQ(header.numVars, 0);

    publisher.poke(numVars, 3);
    publisher.poke(offsetof(irsdk_header, varHeaderOffset), kHuge);
    ASSERT_TRUE(irsdk_copyHeader(header));
    EXPECT_EQ(header.numVars, 0);

    publisher.poke(offsetof(irsdk_header, varHeaderOffset), -1);
    ASSERT_TRUE(irsdk_copyHeader(header));
    EXPECT_EQ(header.numVars, 0);
}

TEST_P(Bounds, TheCopiedHeaderHasNoBufferLengthWhenNoBufferFits) {
    openAtTick10();
    irsdk_header header{};
    for (const int stated : {0, -1, kLowest, kHuge}) {
        publisher.poke(offsetof(irsdk_header, bufferLength), stated);
        ASSERT_TRUE(irsdk_copyHeader(header));
        EXPECT_EQ(header.bufferLength, 0) << stated;
    }
    publisher.poke(offsetof(irsdk_header, bufferLength), length());
    for (int buffer = 0; buffer < 3; ++buffer) {
        publisher.poke(bufferOffsetField(buffer), -16);
    }
    ASSERT_TRUE(irsdk_copyHeader(header));
    EXPECT_EQ(header.bufferLength, 0);
    EXPECT_EQ(irsdk_lastError(), irsdk_Error::BlockInvalid);
}

TEST_P(Bounds, OneBufferThatFitsIsEnoughForTheBufferLength) {
    openAtTick10();
    irsdk_header header{};
    publisher.poke(bufferOffsetField(0), -16);
    publisher.poke(bufferOffsetField(1), kHuge);

    ASSERT_TRUE(irsdk_copyHeader(header));

    EXPECT_EQ(header.bufferLength, length());
}

TEST_P(Bounds, DescriptorsThatDoNotFitLeaveNoBufferLength) {
    openAtTick10();
    irsdk_header header{};
    publisher.poke(offsetof(irsdk_header, numBuf), kHuge);

    ASSERT_TRUE(irsdk_copyHeader(header));

    EXPECT_EQ(header.bufferLength, 0);
    EXPECT_EQ(header.numBuf, kHuge) << "only the counts that are bounded change in the copy";
}

TEST_P(Bounds, TheTableEndsWhereTheMappingEnds) {
    openAtTick10();
    std::vector<irsdk_varHeader> table;
    publisher.poke(offsetof(irsdk_header, numVars), kHuge);

    ASSERT_TRUE(irsdk_copyVarHeaders(table));

    ASSERT_GE(table.size(), 3U);
    EXPECT_LT(table.size(), 1000U);
    EXPECT_STREQ(table[1].name, "CarIdxLap");
    EXPECT_EQ(irsdk_getVarHeaderPtr(), nullptr) << "a pointer would promise all of them";
    EXPECT_NE(irsdk_getVarHeaderEntry(2), nullptr);
    EXPECT_EQ(irsdk_getVarHeaderEntry(static_cast<int>(table.size())), nullptr);
    EXPECT_EQ(irsdk_getVarHeaderEntry(kHuge - 1), nullptr);
    EXPECT_EQ(irsdk_varNameToIndex("NoSuchVariable"), -1);
}

TEST_P(Bounds, ATableOutsideIsNoTable) {
    openAtTick10();
    for (const int offset : {-1, -144, kLowest, kHuge, 100'000'000}) {
        publisher.poke(offsetof(irsdk_header, varHeaderOffset), offset);
        std::vector<irsdk_varHeader> table(5);

        EXPECT_TRUE(irsdk_copyVarHeaders(table)) << offset;
        EXPECT_TRUE(table.empty()) << offset;
        EXPECT_EQ(irsdk_getVarHeaderPtr(), nullptr) << offset;
        EXPECT_EQ(irsdk_getVarHeaderEntry(0), nullptr) << offset;
        EXPECT_EQ(irsdk_varNameToIndex("Speed"), -1) << offset;
        EXPECT_EQ(irsdk_varNameToOffset("Speed"), -1) << offset;
    }
}

TEST_P(Bounds, ATableOnAnOddAddressIsRead) {
    openAtTick10();
    const irsdk_varHeader entry = block.variable("Gear");
    const std::int32_t odd = block.header().varHeaderOffset + 1;
    publisher.command("bytes " + std::to_string(odd) + ' ' +
                      testsupport::toHex(&entry, sizeof entry));
    publisher.poke(offsetof(irsdk_header, varHeaderOffset), odd);

    EXPECT_EQ(irsdk_varNameToIndex("Gear"), 0);
    EXPECT_EQ(irsdk_varNameToOffset("Gear"), entry.offset);
}

TEST_P(Bounds, BuffersOutsideHaveNoAddress) {
    openAtTick10();
    ASSERT_NE(irsdk_getData(0), nullptr);
    EXPECT_EQ(irsdk_getData(-1), nullptr);
    EXPECT_EQ(irsdk_getData(kHuge), nullptr);
    EXPECT_EQ(irsdk_getData(kLowest), nullptr);

    publisher.poke(bufferOffsetField(0), kHuge);
    EXPECT_EQ(irsdk_getData(0), nullptr);
    publisher.poke(bufferOffsetField(0), -1);
    EXPECT_EQ(irsdk_getData(0), nullptr);
    publisher.poke(offsetof(irsdk_header, bufferLength), kHuge);
    EXPECT_EQ(irsdk_getData(1), nullptr);
    publisher.poke(offsetof(irsdk_header, bufferLength), 0);
    EXPECT_EQ(irsdk_getData(1), nullptr);
}

TEST_P(Bounds, ASessionTextOutsideIsAnEmptyText) {
    openAtTick10();
    for (const int offset : {-1, kLowest, kHuge, 100'000'000}) {
        publisher.poke(offsetof(irsdk_header, sessionInfoOffset), offset);
        std::string text = "left over";
        int update = 0;

        EXPECT_TRUE(irsdk_copySessionInfoStr(text, update)) << offset;
        EXPECT_TRUE(text.empty());
        EXPECT_EQ(update, irsdk_getSessionInfoStrUpdate());
        EXPECT_EQ(irsdk_getSessionInfoStr(), nullptr) << offset;
    }
}

TEST_P(Bounds, ATableForWhichThereIsNoMemoryIsNoTable) {
    constexpr std::size_t kBlock = 8 << 20;
    constexpr std::size_t kScarce = 1 << 20;
    publisher.command("empty " + std::to_string(kBlock));
    publisher.publish(block);
    publisher.poke(offsetof(irsdk_header, numVars), kHuge);
    ASSERT_TRUE(irsdk_startup());
    std::vector<irsdk_varHeader> table;
    bool copied = true;
    {
        const testsupport::ScarceMemory scarce(kScarce);
        copied = irsdk_copyVarHeaders(table);
    }
    EXPECT_FALSE(copied);
    EXPECT_EQ(irsdk_lastError(), irsdk_Error::OutOfMemory);
    EXPECT_TRUE(table.empty());

    EXPECT_TRUE(irsdk_copyVarHeaders(table));
    EXPECT_GT(table.size() * sizeof(irsdk_varHeader), kScarce);
}

TEST_P(Bounds, ASessionTextForWhichThereIsNoMemoryIsNoText) {
    constexpr std::size_t kText = 200'000;
    constexpr std::size_t kScarce = 100'000;
    block.setSessionText(std::string(kText, 'x'));
    openAtTick10();
    std::string text;
    int update = 0;
    bool copied = true;
    {
        const testsupport::ScarceMemory scarce(kScarce);
        copied = irsdk_copySessionInfoStr(text, update);
    }
    EXPECT_FALSE(copied);
    EXPECT_EQ(irsdk_lastError(), irsdk_Error::OutOfMemory);
    EXPECT_TRUE(text.empty());
    EXPECT_EQ(update, block.header().sessionInfoUpdate);

    EXPECT_TRUE(irsdk_copySessionInfoStr(text, update));
    EXPECT_EQ(text.size(), kText);
}

RATAIP_IN_BOTH_PLACES(Bounds);

}  // namespace
