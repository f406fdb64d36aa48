#include "sdk/dynamicdata.h"

#include "tests/support/printqt.h"

#include <gtest/gtest.h>

using TLM::SDK::DynamicData;
using TLM::SDK::Value;

TEST(DynamicData, StartsEmpty) {
    const DynamicData data;
    EXPECT_TRUE(data.isEmpty());
    EXPECT_TRUE(data.valueNameList().isEmpty());
}

TEST(DynamicData, StoresAndReplacesByName) {
    DynamicData data;
    data.setValue("speed", Value(1.0, "m/s"));
    data.setValue("speed", 2.0, "km/h");
    EXPECT_TRUE(data.containsValue("speed"));
    EXPECT_FALSE(data.containsValue("Speed"));
    EXPECT_EQ(data.value("speed").value.toDouble(), 2.0);
    EXPECT_EQ(data.value("speed").unit(), "km/h");
    EXPECT_EQ(data.valueNameList().size(), 1);
    EXPECT_FALSE(data.isEmpty());
}

TEST(DynamicData, GivesADefaultValueForAnAbsentNameAndStaysUnchanged) {
    const DynamicData data;
    const Value absent = data.value("speed");
    EXPECT_FALSE(absent.value.isValid());
    EXPECT_TRUE(absent.unit().isEmpty());
    EXPECT_TRUE(absent.print().isEmpty());
    EXPECT_TRUE(data.isEmpty());
}

TEST(DynamicData, ListsNamesByCodeUnits) {
    DynamicData data;
    for (const char* name : {"b", "A", "a"}) {
        data.setValue(name, 1, QString());
    }
    EXPECT_EQ(data.valueNameList(), QStringList({"A", "a", "b"}));
}

TEST(DynamicData, RemovesOneNameAndIgnoresAbsentOnes) {
    DynamicData data;
    data.removeValue("a");
    data.setValue("a", 1, QString());
    data.setValue("b", 2, QString());
    data.removeValue("a");
    data.removeValue("c");
    EXPECT_EQ(data.valueNameList(), QStringList({"b"}));
}

TEST(DynamicData, ClearAndRemoveValuesDoNotChangeEarlierCopies) {
    for (const auto empty : {&DynamicData::clear, &DynamicData::removeValues}) {
        DynamicData data;
        data.setValue("a", 1, QString());
        const DynamicData copy = data;
        (data.*empty)();
        EXPECT_TRUE(data.isEmpty());
        EXPECT_TRUE(copy.containsValue("a"));
    }
}

TEST(DynamicData, CopiesShareUntilOneWrites) {
    DynamicData data;
    data.setValue("a", 1, QString());
    DynamicData copy = data;
    EXPECT_TRUE(copy.data().isSharedWith(data.data()));
    copy.setValue("a", 2, QString());
    EXPECT_FALSE(copy.data().isSharedWith(data.data()));
    EXPECT_EQ(data.value("a").value.toInt(), 1);

    DynamicData third = data;
    third.removeValue("a");
    EXPECT_TRUE(data.containsValue("a"));
}

TEST(DynamicData, GivesItsMapForReadingAndForWritingInPlace) {
    DynamicData data;
    data.setValue("a", 1, "s");
    for (Value& value : data.data()) {
        value.value = 5;
    }
    EXPECT_EQ(data.value("a").value.toInt(), 5);
    const DynamicData& reading = data;
    EXPECT_EQ(reading.data().firstKey(), "a");
}
