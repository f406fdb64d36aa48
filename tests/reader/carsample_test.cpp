#include "reader/carsample.h"

#include "tests/reader/filledsample.h"
#include "tests/support/printqt.h"

#include <gtest/gtest.h>

#include <bit>

namespace readertest {
namespace {

using reader::CarSample;
using reader::KnownValue;
using TLM::SDK::Sample;
using TLM::SDK::Value;

quint64 bitsOf(double number) {
    return std::bit_cast<quint64>(number);
}

/** The sample's layout, row and known values agree with its map. */
void expectConsistent(const CarSample& sample) {
    const auto& values = sample.get().data();
    if (sample.layout() != nullptr) {
        ASSERT_EQ(sample.layout()->columns.size(), static_cast<std::size_t>(values.size()));
        std::size_t column = 0;
        for (auto it = values.cbegin(); it != values.cend(); ++it, ++column) {
            EXPECT_EQ(sample.layout()->columns[column].name, it.key());
            EXPECT_EQ(sample.layout()->columns[column].unit, it->unit());
            EXPECT_EQ(bitsOf(sample.row()[column]), bitsOf(it->value.toDouble()))
                << it.key().toStdString();
        }
    }
    for (const KnownValue known :
         {KnownValue::LapDistPct, KnownValue::SessionState, KnownValue::SessionTick,
          KnownValue::OnPitRoad, KnownValue::Speed}) {
        const auto found = values.constFind(reader::nameOf(known));
        EXPECT_EQ(sample.known(known), found == values.cend() ? nullptr : &found->value);
    }
}

/** Compares bits, because a NaN is not equal to itself. */
void expectSameValues(const Sample& left, const Sample& right) {
    ASSERT_EQ(left.valueNameList(), right.valueNameList());
    for (auto l = left.data().cbegin(), r = right.data().cbegin(); l != left.data().cend();
         ++l, ++r) {
        ASSERT_EQ(l->value.metaType(), r->value.metaType()) << l.key().toStdString();
        EXPECT_EQ(l->unit(), r->unit());
        const auto size = static_cast<std::size_t>(l->value.metaType().sizeOf());
        if (l->value.typeId() == QMetaType::QString) {
            EXPECT_EQ(l->value, r->value);
        } else {
            EXPECT_EQ(std::memcmp(l->value.constData(), r->value.constData(), size), 0)
                << l.key().toStdString();
        }
    }
}

}  // namespace

TEST(CarSample, HasTheSameValuesAsASampleFilledByName) {
    SnapshotSource first(variablesOfEveryType());
    SnapshotSource second({{"gear", irsdk_int, ""}, {"speed", irsdk_double, "km/h"}}, 2);
    reader::SamplingPlan plan;
    CarSample sample;
    Sample expected;
    QList<Sample> kept;
    for (int tick = 0; tick < 3000; ++tick) {
        SnapshotSource& source = tick / 500 % 2 == 0 ? first : second;
        source.change();
        source.fill(sample, plan);
        source.setByName(expected);
        if (source.number(50) == 0) {
            sample.set("note", Value(QString::number(tick), "unit"));
            expected.setValue("note", QString::number(tick), "unit");
        }
        if (source.number(200) == 0) {
            sample.clear();
            expected.clear();
        }
        ASSERT_NO_FATAL_FAILURE(expectSameValues(sample, expected)) << "tick " << tick;
        ASSERT_NO_FATAL_FAILURE(expectConsistent(sample)) << "tick " << tick;
        // A host that keeps no samples, some and all of them in turn.
        kept.append(sample);
        while (kept.size() > (tick / 100 % 3) * 2) {
            kept.removeFirst();
        }
    }
}

TEST(CarSample, NeverWritesToASharedSample) {
    SnapshotSource source(variablesOfEveryType());
    CarSample sample;
    std::vector<std::pair<Sample, Sample>> kept;  // shared, and a deep copy
    for (int tick = 0; tick < 40; ++tick) {
        source.change();
        source.fill(sample);
        Sample copy = sample;
        copy.data().detach();
        kept.emplace_back(sample, copy);
    }
    for (const auto& [shared, copy] : kept) {
        expectSameValues(shared, copy);
    }
}

TEST(CarSample, KeepsItsLayoutWhileNamesAndUnitsStayTheSame) {
    SnapshotSource source(variablesOfEveryType());
    CarSample sample;
    EXPECT_EQ(sample.layout(), nullptr);
    source.fill(sample);
    const auto layout = sample.layout();
    ASSERT_NE(layout, nullptr);
    for (int tick = 0; tick < 10; ++tick) {
        const CarSample keepsValuesShared = sample;
        source.change();
        source.fill(sample);
        EXPECT_EQ(sample.layout(), layout);
    }
    sample.clear();
    EXPECT_EQ(sample.layout(), nullptr) << "there is no row until the next tick";
    source.fill(sample);
    EXPECT_EQ(sample.layout(), layout) << "the same names and units again";
    sample.set("more", Value(1, QString()));
    EXPECT_EQ(sample.layout(), nullptr);
    source.fill(sample);
    EXPECT_NE(sample.layout(), layout);
    expectConsistent(sample);
}

TEST(CarSample, FindsItsValuesAgainAfterAnyChange) {
    const std::function<void(CarSample&)> ways[] = {
        [](CarSample& sample) { sample.set("speed", Value(1.5, "m/s")); },
        [](CarSample& sample) { sample.setValue("speed", Value(1.5, "m/s")); },
        [](CarSample& sample) { sample.setValue("speed", 1.5, "m/s"); },
        [](CarSample& sample) { sample.removeValue("speed"); },
        [](CarSample& sample) { sample.removeValues(); },
        [](CarSample& sample) { sample.clear(); },
        [](CarSample& sample) { sample = Sample(); },
        [](CarSample& sample) { sample = CarSample(); },
        [](CarSample& sample) { sample.data().clear(); },
        [](CarSample& sample) { sample.handOut().clear(); },
    };
    for (const auto& change : ways) {
        SnapshotSource source(variablesOfEveryType());
        CarSample sample;
        QList<Sample> kept;
        for (int tick = 0; tick < 3; ++tick) {
            source.fill(sample);
            kept.append(sample);
        }
        kept.clear();  // now the generations can be reused
        Sample expected = sample;
        change(sample);
        expectConsistent(sample);
        for (int tick = 0; tick < 5; ++tick) {
            source.change();
            source.fill(sample);
            source.setByName(expected);
            ASSERT_NO_FATAL_FAILURE(expectSameValues(sample, expected)) << &change - ways;
            ASSERT_NO_FATAL_FAILURE(expectConsistent(sample)) << &change - ways;
        }
    }
}

TEST(CarSample, HasNoRowOnceAReferenceToItWasHandedOut) {
    SnapshotSource source(variablesOfEveryType());
    CarSample sample;
    source.fill(sample);
    EXPECT_FALSE(sample.isHandedOut());
    Sample& handedOut = sample.handOut();
    EXPECT_TRUE(sample.isHandedOut());
    for (int tick = 0; tick < 3; ++tick) {
        source.fill(sample);
        EXPECT_EQ(sample.layout(), nullptr);
        handedOut.removeValue("lapdistpct");
        EXPECT_EQ(sample.known(KnownValue::LapDistPct), nullptr);
        handedOut.setValue("lapdistpct", 0.5, QString());
        EXPECT_EQ(sample.known(KnownValue::LapDistPct)->toDouble(), 0.5);
    }
}

TEST(CarSample, IsCopiedWithoutChangingTheOriginal) {
    SnapshotSource source(variablesOfEveryType());
    CarSample sample;
    source.fill(sample);
    CarSample copy = sample;
    EXPECT_EQ(copy.layout(), nullptr);
    expectSameValues(copy, sample);
    const Sample before = sample;
    source.change();
    source.fill(copy);
    expectSameValues(sample, before);
    expectConsistent(sample);
    expectConsistent(copy);
    const CarSample moved = std::move(copy);
    expectConsistent(moved);
}

TEST(CarSample, DistinguishesTicksThatAreEqualAsDoubles) {
    const std::vector<SnapshotSource::Variable> none;
    reader::SamplingPlan plan;
    irsdk_varHeader header{};
    header.type = irsdk_int;
    header.count = 1;
    const QStringList names{"sessiontime", "sessiontimeremain", "sessiontick"};
    const std::vector<irsdk_varHeader> table(3, header);
    plan.resolve(table.data(), 3, names, {"", "", ""},
                 {.ownCar = 0, .carCount = 2, .dataLength = 4});
    const char snapshot[4]{};
    CarSample other;
    constexpr quint64 kLargest = std::numeric_limits<quint64>::max();
    for (const quint64 tick : {kLargest - 1, kLargest, kLargest - 2}) {
        other.fill(plan, 1, snapshot, tick);
        EXPECT_EQ(other.known(KnownValue::SessionTick)->toULongLong(), tick);
    }
}

}  // namespace readertest
