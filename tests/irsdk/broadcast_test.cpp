#include "irsdk/irsdk.h"
#include "tests/support/publishedobjects.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <vector>

namespace {

using publisher::BroadcastMessage;
using testsupport::BroadcastReceiver;

constexpr int kHighest = std::numeric_limits<int>::max();
constexpr int kLowest = std::numeric_limits<int>::min();

irsdk_BroadcastMsg code(int number) {
    return static_cast<irsdk_BroadcastMsg>(number);
}

class Broadcast : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(receiver.isReady()); }

    /** The one message that arrived; a message of number 0 when it was not one. */
    BroadcastMessage theMessage() {
        const std::vector<BroadcastMessage> messages = receiver.take();
        EXPECT_EQ(messages.size(), 1U);
        return messages.size() == 1 ? messages.front() : BroadcastMessage{};
    }

    BroadcastReceiver receiver;
};

TEST_F(Broadcast, TheNumberLiesWhereMessagesAreRegistered) {
    const unsigned int number = irsdk_getBroadcastMsgID();

    EXPECT_GE(number, 0xC000U);
    EXPECT_LE(number, 0xFFFFU);
    EXPECT_EQ(irsdk_getBroadcastMsgID(), number);
}

TEST_F(Broadcast, SendsCodeAndArguments) {
    irsdk_broadcastMsg(code(7), 0x1234, 56);

    const BroadcastMessage message = theMessage();
    EXPECT_EQ(message.number, irsdk_getBroadcastMsgID());
    EXPECT_EQ(message.wParam, 0x12340007);
    EXPECT_EQ(message.lParam, 56);
}

struct IntegerRow {
    int msg;
    int var1;
    int var2;
    std::int64_t wParam;
    std::int64_t lParam;
};

TEST_F(Broadcast, ExtendsTheSignOfBothParameters) {
    const std::vector<IntegerRow> rows{
        {0, 0, 0, 0, 0},
        {0, 0, -1, 0, -1},
        {12, -1, kLowest, -65536 + 12, kLowest},
        {1, -2, kHighest, -131071, kHighest},
        {3, 0x7FFF, 1, 0x7FFF0003, 1},
        {3, 0x8000, 1, static_cast<std::int32_t>(0x80000003U), 1},
        {3, 0x18000, 1, static_cast<std::int32_t>(0x80000003U), 1},
        {3, kHighest, 1, -65536 + 3, 1},
        {3, kLowest, 1, 3, 1},
    };
    for (const IntegerRow& row : rows) {
        irsdk_broadcastMsg(code(row.msg), row.var1, row.var2);

        const BroadcastMessage message = theMessage();
        EXPECT_EQ(message.wParam, row.wParam) << row.var1;
        EXPECT_EQ(message.lParam, row.lParam) << row.var2;
    }
}

struct RealRow {
    float value;
    std::int64_t lParam;
};

TEST_F(Broadcast, SendsRealNumbersAsFixedPoint) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    const std::vector<RealRow> rows{
        {0.0F, 0},
        {1.0F, 65536},
        {1.5F, 98304},
        {-0.25F, -16384},
        {0.00002F, 1},    // 1.31, cut off
        {-0.00002F, -1},  // towards zero on both sides
        {-0.00001F, 0},
        {32767.0F, 2147418112},
        {-32768.0F, kLowest},
        {32768.0F, kHighest},  // the nearest number that there is
        {-32769.0F, kLowest},
        {1e30F, kHighest},
        {-1e30F, kLowest},
        {kInfinity, kHighest},
        {-kInfinity, kLowest},
        {std::numeric_limits<float>::quiet_NaN(), 0},
    };
    for (const RealRow& row : rows) {
        irsdk_broadcastMsg(code(4), -1, row.value);

        const BroadcastMessage message = theMessage();
        EXPECT_EQ(message.wParam, -65536 + 4) << row.value;
        EXPECT_EQ(message.lParam, row.lParam) << row.value;
    }
}

TEST_F(Broadcast, SendsOnlyKnownCodes) {
    for (const int number : {13, 14, 0x10000, kHighest, -1, kLowest}) {
        irsdk_broadcastMsg(code(number), 1, 2);
        irsdk_broadcastMsg(code(number), 1, 2.0F);
        EXPECT_TRUE(receiver.take().empty()) << number;
    }
    irsdk_broadcastMsg(code(12), 1, 2);
    EXPECT_EQ(theMessage().wParam, 0x1000C);
}

TEST_F(Broadcast, ThreeArgumentsAreNotSent) {
    irsdk_broadcastMsg(code(1), 1, 2, 3);

    EXPECT_TRUE(receiver.take().empty());
}

TEST_F(Broadcast, KeepsTheOrderOfCommands) {
    irsdk_broadcastMsg(code(1), 0, 10);
    irsdk_broadcastMsg(code(2), 0, 20);

    const std::vector<BroadcastMessage> messages = receiver.take();
    ASSERT_EQ(messages.size(), 2U);
    EXPECT_EQ(messages[0].lParam, 10);
    EXPECT_EQ(messages[1].lParam, 20);
}

TEST(BroadcastWithoutReceiver, ReachesNoReceiverThatComesLater) {
    irsdk_broadcastMsg(code(1), 2, 3);
    irsdk_broadcastMsg(code(1), 2, 3.0F);

    BroadcastReceiver receiver;
    ASSERT_TRUE(receiver.isReady());
    EXPECT_TRUE(receiver.take().empty());
    irsdk_broadcastMsg(code(1), 2, 4);
    const std::vector<BroadcastMessage> messages = receiver.take();
    ASSERT_EQ(messages.size(), 1U);
    EXPECT_EQ(messages.front().lParam, 4);
}

TEST(PadCarNum, LeavesANumberWithoutZeros) {
    EXPECT_EQ(irsdk_padCarNum(5, 0), 5);
    EXPECT_EQ(irsdk_padCarNum(123, 0), 123);
    EXPECT_EQ(irsdk_padCarNum(-3, 0), -3);
}

TEST(PadCarNum, PutsTheDigitsInAllInFront) {
    EXPECT_EQ(irsdk_padCarNum(7, 2), 3007);
    EXPECT_EQ(irsdk_padCarNum(7, 1), 2007);
    EXPECT_EQ(irsdk_padCarNum(0, 1), 2000);
    EXPECT_EQ(irsdk_padCarNum(9, 1), 2009);
    EXPECT_EQ(irsdk_padCarNum(10, 1), 3010);
    EXPECT_EQ(irsdk_padCarNum(99, 1), 3099);
    EXPECT_EQ(irsdk_padCarNum(100, 1), 4100);
    EXPECT_EQ(irsdk_padCarNum(123, 1), 4123);
}

TEST(PadCarNum, ANegativeNumberCountsAsOneDigit) {
    EXPECT_EQ(irsdk_padCarNum(-3, 1), 1997);
    EXPECT_EQ(irsdk_padCarNum(-300, 1), 1700);
}

}  // namespace
