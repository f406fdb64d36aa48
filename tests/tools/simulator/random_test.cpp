#include "tools/simulator/random.h"

#include "tools/simulator/text.h"
#include "tools/simulator/wave.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace simulator;

TEST(Random, GivesTheSameNumbersForTheSameSeed) {
    Random first(42);
    Random second(42);
    for (int drawn = 0; drawn < 100; ++drawn) {
        EXPECT_EQ(first.bits(), second.bits());
    }
}

TEST(Random, GivesTheSameNumbersInEveryVersion) {
    // If these numbers change, seeds that users have noted down give other laps.
    EXPECT_EQ(Random(1).bits(), 0x910A2DEC89025CC1U);
}

TEST(Random, KeepsAStreamWhateverElseIsDrawn) {
    const Random parent(7);
    Random other = parent.stream(3);
    other.bits();
    EXPECT_EQ(parent.stream(4).bits(), Random(7).stream(4).bits());
    EXPECT_NE(parent.stream(4).bits(), parent.stream(5).bits());
}

TEST(Random, StaysInItsBounds) {
    Random random(9);
    bool lowSeen = false;
    bool highSeen = false;
    for (int drawn = 0; drawn < 2000; ++drawn) {
        const double between = random.between(-2.0, 3.0);
        EXPECT_GE(between, -2.0);
        EXPECT_LT(between, 3.0);
        EXPECT_LE(std::abs(random.bellShaped()), 1.0);
        const int whole = random.whole(5, 8);
        EXPECT_GE(whole, 5);
        EXPECT_LE(whole, 8);
        lowSeen = lowSeen || whole == 5;
        highSeen = highSeen || whole == 8;
    }
    EXPECT_TRUE(lowSeen);
    EXPECT_TRUE(highSeen);
    EXPECT_EQ(random.below(0), 0);
    EXPECT_EQ(random.below(-3), 0);
    EXPECT_EQ(random.below(1), 0);
}

TEST(Wave, IsASine) {
    constexpr int kSteps = 450;
    constexpr double kTurnsPerStep = 6.0 / kSteps;
    for (int step = 0; step < kSteps; ++step) {
        const double turns = -3.0 + kTurnsPerStep * step;
        EXPECT_NEAR(wave(turns), std::sin(turns * 2.0 * kPi), 1e-5) << turns;
        EXPECT_NEAR(waveCos(turns), std::cos(turns * 2.0 * kPi), 1e-5) << turns;
    }
}

TEST(Wave, BringsAnglesIntoOneTurn) {
    EXPECT_NEAR(wrappedAngle(3.0 * kPi / 2.0), -kPi / 2.0, 1e-12);
    EXPECT_NEAR(wrappedAngle(-9.0), -9.0 + 2.0 * kPi, 1e-12);
    EXPECT_NEAR(wrappedAngle(1.0), 1.0, 1e-12);
}

TEST(Text, WritesNumbersTheSameInEveryLocale) {
    EXPECT_EQ(fixedText(4.612, 2), "4.61");
    EXPECT_EQ(fixedText(-1.0, 4), "-1.0000");
    EXPECT_EQ(fixedText(1e300, 0).size(), 301U);
    EXPECT_EQ(std::stof(shortestText(93.1234F)), 93.1234F);
    EXPECT_EQ(shortestText(-1.0F), "-1");
}

TEST(Text, ReadsOnlyWholeTexts) {
    long long whole = 5;
    EXPECT_TRUE(readInteger("-12", whole));
    EXPECT_EQ(whole, -12);
    double number = 5.0;
    EXPECT_TRUE(readNumber("2.5", number));
    EXPECT_EQ(number, 2.5);
    for (const char* bad : {"", "x", "12x", " 12", "99999999999999999999"}) {
        EXPECT_FALSE(readInteger(bad, whole)) << bad;
    }
    for (const char* bad : {"", "x", "1.5s", "inf", "nan", "1e999"}) {
        EXPECT_FALSE(readNumber(bad, number)) << bad;
    }
    EXPECT_EQ(whole, -12);
    EXPECT_EQ(number, 2.5);
}

TEST(Text, TakesAnUnfinishedLineOnlyWhenNothingFollows) {
    std::string text = "one\n\ntwo";
    EXPECT_EQ(takeLine(text, true), "one");
    EXPECT_EQ(takeLine(text, false), "");
    EXPECT_EQ(takeLine(text, false), std::nullopt);
    EXPECT_EQ(takeLine(text, true), "two");
    EXPECT_EQ(takeLine(text, true), std::nullopt);
}

TEST(Text, TrimsBothEnds) {
    EXPECT_EQ(trimmed(" \tstep 3\r"), "step 3");
    EXPECT_EQ(trimmed("  "), "");
    EXPECT_EQ(trimmed(""), "");
}
