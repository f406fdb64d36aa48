#include "tests/support/testblock.h"

#include "tests/support/checkedsnapshot.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using testsupport::TestBlock;

TEST(TestBlock, LaysVariablesOutByTheirAlignment) {
    TestBlock block;
    block.addVariable("Flag", irsdk_bool);
    block.addVariable("Time", irsdk_double, 1, "s");
    block.addVariable("Letter", irsdk_char);
    block.addVariable("Lap", irsdk_int, 64, "", "Laps of all cars");

    EXPECT_EQ(block.variable("Flag").offset, 0);
    EXPECT_EQ(block.variable("Time").offset, 8);
    EXPECT_EQ(block.variable("Letter").offset, 16);
    EXPECT_EQ(block.variable("Lap").offset, 20);
    EXPECT_EQ(block.snapshotLength(), 20 + 4 * 64);
    EXPECT_EQ(block.header().bufferLength, block.snapshotLength());
    EXPECT_EQ(block.header().numVars, 4);
    EXPECT_STREQ(block.varHeaders()[1].unit, "s");
    EXPECT_STREQ(block.varHeaders()[3].desc, "Laps of all cars");
}

TEST(TestBlock, StoresValuesInTheTypeOfTheVariable) {
    TestBlock block;
    block.addVariable("Flag", irsdk_bool);
    block.addVariable("Time", irsdk_double);
    block.addVariable("Bits", irsdk_bitField);
    block.addVariable("Speeds", irsdk_float, 2);
    block.addVariable("Name", irsdk_char, 4);
    block.set("Flag", 255);
    block.set("Time", 0.1);
    block.set("Bits", -2147483648.0);
    block.set("Speeds", 1.5, 1);
    block.setText("Name", "ab");

    const char* data = block.snapshot();
    const auto read = [&block, data]<typename T>(const char* name, int element, T value) {
        std::memcpy(&value,
                    data + block.variable(name).offset +
                        static_cast<std::ptrdiff_t>(sizeof value) * element,
                    sizeof value);
        return value;
    };
    EXPECT_EQ(read("Flag", 0, std::uint8_t{}), 255);
    EXPECT_EQ(read("Time", 0, 0.0), 0.1);
    EXPECT_EQ(read("Bits", 0, std::int32_t{}), -2147483647 - 1);
    EXPECT_EQ(read("Speeds", 0, 0.0F), 0.0F);
    EXPECT_EQ(read("Speeds", 1, 0.0F), 1.5F);
    EXPECT_STREQ(data + block.variable("Name").offset, "ab");

    block.setAll("Speeds", 3);
    EXPECT_EQ(read("Speeds", 0, 0.0F), 3.0F);
    block.clearSnapshot();
    EXPECT_EQ(read("Speeds", 1, 0.0F), 0.0F);
}

TEST(TestBlock, CompletesBuffersInTurn) {
    TestBlock block;
    block.setBufferCount(2);
    block.addVariable("Lap", irsdk_int);
    block.set("Lap", 7);

    EXPECT_EQ(block.completeNext(100), 0);
    EXPECT_EQ(block.completeNext(101), 1);
    EXPECT_EQ(block.completeNext(102), 0);

    EXPECT_EQ(block.descriptor(0).tickCount, 102);
    EXPECT_EQ(block.descriptor(1).tickCount, 101);
    EXPECT_EQ(block.buffer(1)[0], 7);
    EXPECT_EQ(block.buffer(1) - block.bytes().data(), block.descriptor(1).bufferOffset);
}

TEST(TestBlock, KeepsTheSessionTextAndCountsItsChanges) {
    TestBlock block;
    const int before = block.header().sessionInfoUpdate;

    block.setSessionText("one");
    EXPECT_STREQ(block.sessionText(), "one");
    EXPECT_EQ(block.header().sessionInfoUpdate, before + 1);

    const std::string longText(10'000, 'x');
    block.setSessionText(longText);
    EXPECT_EQ(block.sessionText(), longText);
    EXPECT_EQ(block.header().sessionInfoUpdate, before + 2);
}

TEST(TestBlock, TakesBrokenValuesAnywhere) {
    TestBlock block;
    block.addVariableAt(-8, "Outside", irsdk_int);
    block.addVariable("Odd", 99, -5);

    EXPECT_EQ(block.variable("Outside").offset, -8);
    EXPECT_EQ(block.variable("Odd").count, -5);
    block.header().numBuf = -1;
    block.poke<std::int32_t>(36, 1234);
    EXPECT_EQ(block.header().bufferLength, 1234);
    EXPECT_EQ(block.peek<std::int32_t>(32), -1);
    EXPECT_EQ(block.indexOf("Nothing"), -1);
}

TEST(CheckedSnapshot, GivesAMixtureAway) {
    std::vector<char> one(256);
    std::vector<char> next(256);
    testsupport::fillChecked(one.data(), one.size(), 41);
    testsupport::fillChecked(next.data(), next.size(), 42);
    EXPECT_TRUE(testsupport::isUntorn(one.data(), one.size()));
    EXPECT_EQ(testsupport::checkedTick(next.data()), 42);

    for (std::size_t split = 4; split < one.size(); split += 4) {
        std::vector<char> mixed = one;
        std::copy(next.begin() + static_cast<std::ptrdiff_t>(split), next.end(),
                  mixed.begin() + static_cast<std::ptrdiff_t>(split));
        EXPECT_FALSE(testsupport::isUntorn(mixed.data(), mixed.size())) << split;
    }
}

}  // namespace
