#include "sdk/value.h"

#include "tests/support/printqt.h"

#include <gtest/gtest.h>

using TLM::SDK::Value;

TEST(Value, DefaultIsInvalidWithoutUnit) {
    const Value value;
    EXPECT_FALSE(value.value.isValid());
    EXPECT_TRUE(value.unit().isEmpty());
}

TEST(Value, HasAQuantityAndAUnit) {
    Value value(12.5, "km/h");
    EXPECT_EQ(value.value.toDouble(), 12.5);
    EXPECT_EQ(value.unit(), "km/h");
    value.setUnit("m/s");
    EXPECT_EQ(value.unit(), "m/s");
}

TEST(Value, PrintsTheQuantityOneBlankAndTheUnit) {
    EXPECT_EQ(Value(12.5, "km/h").print(), "12.5 km/h");
    EXPECT_EQ(Value(QString("wet"), "-").print(), "wet -");
}

TEST(Value, PrintsNoTrailingBlankWithoutAUnit) {
    EXPECT_EQ(Value(12.5, QString()).print(), "12.5");
}

TEST(Value, PrintsAnEmptyTextWhenNothingWasSet) {
    EXPECT_TRUE(Value().print().isEmpty());
}

TEST(Value, PrintsIntoATextOfExactlyTheFinalLength) {
    const QString printed = Value(QString(100, 'x'), QString(50, 'u')).print();
    EXPECT_EQ(printed.size(), 151);
    EXPECT_LT(printed.capacity(), 151 + 16);
}
