#include "tests/irsdk/linktest.h"

#include <chrono>
#include <cstring>

namespace {

class Accessors : public LinkTest {};

TEST_P(Accessors, AnswerNothingWhileClosed) {
    publisher.publish(block);
    irsdk_header header{};
    std::vector<irsdk_varHeader> table(3);
    std::string text = "left over";
    int update = 0;

    EXPECT_EQ(irsdk_getHeader(), nullptr);
    EXPECT_EQ(irsdk_getData(0), nullptr);
    EXPECT_EQ(irsdk_getSessionInfoStr(), nullptr);
    EXPECT_EQ(irsdk_getSessionInfoStrUpdate(), -1);
    EXPECT_EQ(irsdk_getVarHeaderPtr(), nullptr);
    EXPECT_EQ(irsdk_getVarHeaderEntry(0), nullptr);
    EXPECT_EQ(irsdk_varNameToIndex("Speed"), -1);
    EXPECT_EQ(irsdk_varNameToIndex(nullptr), -1);
    EXPECT_EQ(irsdk_varNameToOffset("Speed"), -1);
    EXPECT_FALSE(irsdk_copyHeader(header));
    EXPECT_FALSE(irsdk_copyVarHeaders(table));
    EXPECT_TRUE(table.empty());
    EXPECT_FALSE(irsdk_copySessionInfoStr(text, update));
    EXPECT_TRUE(text.empty());
    EXPECT_EQ(update, -1);
}

TEST_P(Accessors, NeverOpenTheLink) {
    publisher.publish(block);

    EXPECT_EQ(irsdk_getHeader(), nullptr);
    EXPECT_FALSE(irsdk_isConnected());
    EXPECT_EQ(irsdk_getHeader(), nullptr);
}

TEST_P(Accessors, PointAtWhatTheBlockHolds) {
    block.setSessionText("WeekendInfo:\n TrackName: test\n");
    openAtTick10();

    EXPECT_EQ(irsdk_getHeader()->bufferLength, length());
    EXPECT_STREQ(irsdk_getSessionInfoStr(), "WeekendInfo:\n TrackName: test\n");
    EXPECT_EQ(irsdk_getSessionInfoStrUpdate(), block.header().sessionInfoUpdate);
    EXPECT_STREQ(irsdk_getVarHeaderPtr()->name, "Speed");
    EXPECT_STREQ(irsdk_getVarHeaderEntry(1)->name, "CarIdxLap");
    const auto* base = reinterpret_cast<const char*>(irsdk_getHeader());
    EXPECT_EQ(irsdk_getData(2), base + block.descriptor(2).bufferOffset);
}

TEST_P(Accessors, EntriesEndWithTheTable) {
    openAtTick10();

    EXPECT_NE(irsdk_getVarHeaderEntry(2), nullptr);
    EXPECT_EQ(irsdk_getVarHeaderEntry(3), nullptr);
    EXPECT_EQ(irsdk_getVarHeaderEntry(-1), nullptr);
}

TEST_P(Accessors, FindAVariableByItsName) {
    openAtTick10();

    EXPECT_EQ(irsdk_varNameToIndex("Speed"), 0);
    EXPECT_EQ(irsdk_varNameToIndex("Gear"), 2);
    EXPECT_EQ(irsdk_varNameToOffset("Gear"), block.variable("Gear").offset);
    EXPECT_EQ(irsdk_varNameToIndex("gear"), -1) << "upper and lower case differ";
    EXPECT_EQ(irsdk_varNameToIndex("Gea"), -1);
    EXPECT_EQ(irsdk_varNameToIndex("Gears"), -1);
    EXPECT_EQ(irsdk_varNameToIndex(""), -1);
    EXPECT_EQ(irsdk_varNameToIndex(nullptr), -1);
    EXPECT_EQ(irsdk_varNameToOffset(nullptr), -1);
    EXPECT_EQ(irsdk_varNameToOffset("Nothing"), -1);
}

TEST_P(Accessors, TheFirstOfEqualNamesIsFound) {
    block.addVariable("Gear", irsdk_int);
    openAtTick10();

    EXPECT_EQ(irsdk_varNameToIndex("Gear"), 2);
}

TEST_P(Accessors, ANameOfFullLengthNeedsNoZero) {
    const std::string name(IRSDK_MAX_STRING, 'n');
    const int index = block.addVariable(name, irsdk_int);
    openAtTick10();

    EXPECT_EQ(irsdk_varNameToIndex(name.c_str()), index);
    EXPECT_EQ(irsdk_varNameToIndex((name + "more").c_str()), index)
        << "only 32 characters are compared";
    EXPECT_EQ(irsdk_varNameToIndex(name.substr(1).c_str()), -1);
}

TEST_P(Accessors, ABlockWithoutVariablesHasNoNames) {
    openAtTick10();
    publisher.poke(offsetof(irsdk_header, numVars), 0);

    EXPECT_EQ(irsdk_varNameToIndex("Speed"), -1);
    EXPECT_EQ(irsdk_varNameToOffset("Speed"), -1);
    EXPECT_EQ(irsdk_getVarHeaderEntry(0), nullptr);
    EXPECT_NE(irsdk_getVarHeaderPtr(), nullptr);
}

TEST_P(Accessors, TheHeaderIsCopied) {
    openAtTick10();
    irsdk_header header{};

    ASSERT_TRUE(irsdk_copyHeader(header));

    EXPECT_EQ(header.version, block.header().version);
    EXPECT_EQ(header.status, irsdk_stConnected);
    EXPECT_EQ(header.tickRate, 60);
    EXPECT_EQ(header.sessionInfoUpdate, block.header().sessionInfoUpdate);
    EXPECT_EQ(header.numVars, 3);
    EXPECT_EQ(header.numBuf, 3);
    EXPECT_EQ(header.bufferLength, length());
    EXPECT_EQ(header.varBuf[0].tickCount, 10);
}

TEST_P(Accessors, TheTableIsCopiedIntoTheSamePlace) {
    openAtTick10();
    std::vector<irsdk_varHeader> table;
    ASSERT_TRUE(irsdk_copyVarHeaders(table));
    const irsdk_varHeader* place = table.data();

    ASSERT_TRUE(irsdk_copyVarHeaders(table));

    EXPECT_EQ(table.data(), place);
    ASSERT_EQ(table.size(), 3U);
    EXPECT_EQ(std::memcmp(table.data(), block.varHeaders(), 3 * sizeof(irsdk_varHeader)), 0);
}

TEST_P(Accessors, TheSessionTextIsCopiedWithItsCounter) {
    openAtTick10();
    publisher.setSessionText(77, "---\nDriverInfo:\n");
    std::string text;
    int update = 0;

    ASSERT_TRUE(irsdk_copySessionInfoStr(text, update));

    EXPECT_EQ(text, "---\nDriverInfo:\n");
    EXPECT_EQ(update, 77);
}

TEST_P(Accessors, AnEmptySessionTextIsAText) {
    openAtTick10();
    publisher.setSessionText(5, "");
    std::string text = "left over";
    int update = 0;

    ASSERT_TRUE(irsdk_copySessionInfoStr(text, update));

    EXPECT_TRUE(text.empty());
    EXPECT_EQ(update, 5);
}

TEST_P(Accessors, ASessionTextWithoutAZeroEndsWithTheMapping) {
    openAtTick10();
    // Two pages of text to the very end of a block of two pages, whatever a page's end may hide.
    constexpr int kBlock = 8192;
    publisher.command("unlink");
    irsdk_shutdown();
    publisher.command("empty " + std::to_string(kBlock));
    irsdk_header header = block.header();
    header.numVars = 0;
    header.sessionInfoOffset = sizeof header;
    header.numBuf = 1;
    publisher.command("bytes 0 " + testsupport::toHex(&header, sizeof header));
    const std::string endless(kBlock - sizeof header, 'x');
    publisher.command("bytes " + std::to_string(sizeof header) + ' ' +
                      testsupport::toHex(endless.data(), endless.size()));
    ASSERT_TRUE(irsdk_startup());
    std::string text;
    int update = 0;

    EXPECT_TRUE(irsdk_copySessionInfoStr(text, update));
    EXPECT_EQ(text, endless);
    EXPECT_EQ(irsdk_getSessionInfoStr(), nullptr) << "a pointer would promise a zero";
}

RATAIP_IN_BOTH_PLACES(Accessors);

/**
 * A session text that is changed without pause. It is so long that its writer gets its turn during
 * every copy, also where both share one processor.
 */
class RestlessSession : public LinkToOwnProcessTest {
protected:
    static constexpr std::size_t kLength = std::size_t{40} << 20;

    void SetUp() override {
        LinkToOwnProcessTest::SetUp();
        block.setSessionText(std::string(kLength, 'a'));
        const std::vector<char>& bytes = block.bytes();
        publisher.command("empty " + std::to_string(bytes.size()));
        std::memcpy(published(), bytes.data(), bytes.size());
        publisher.createEvent();
        ASSERT_TRUE(irsdk_startup());
    }

    /** Copies until a copy is refused, or until that should have been the case long ago. */
    bool isRefusedOnce() {
        constexpr int kCopies = 2000;
        bool refused = false;
        for (int copy = 0; !refused && copy < kCopies; ++copy) {
            refused = !irsdk_copySessionInfoStr(text, update);
            EXPECT_EQ(text.empty(), refused);
        }
        publisher.command("stop");
        return refused;
    }

    std::string text;
    int update = 0;
};

TEST_F(RestlessSession, IsRefusedWhileItsCounterMoves) {
    publisher.command("bump");

    EXPECT_TRUE(isRefusedOnce());

    ASSERT_TRUE(irsdk_copySessionInfoStr(text, update));
    EXPECT_EQ(text.size(), kLength);
    EXPECT_EQ(update, irsdk_getSessionInfoStrUpdate());
}

TEST_F(RestlessSession, IsRefusedWhileItChangesBeforeItsCounter) {
    publisher.command("flip " + std::to_string(block.header().sessionInfoOffset + 50'000));

    EXPECT_TRUE(isRefusedOnce());

    ASSERT_TRUE(irsdk_copySessionInfoStr(text, update));
    EXPECT_EQ(text, irsdk_getSessionInfoStr());
}

}  // namespace
