#include "tests/reader/readerfixture.h"

#include <QVariant>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <deque>
#include <limits>
#include <set>
#include <string>
#include <utility>
#include <vector>

using namespace readertest;
using testsupport::TestBlock;
using TLM::SDK::Sample;

namespace {

constexpr int kSlots = 64;

/** A type that no simulator uses. */
constexpr int kUnknownType = 9;

class Sampling : public ReaderTest {
protected:
    iRTelemetryReader& reader = drive.reader;
    TestBlock block;

    /** A live session with the own car in `own`. */
    void knowOwnCar(const QByteArray& own = QByteArray::number(kOwnCar)) {
        drive.session.ownCar = own;
        drive.publishSession();
        reader.updateCarList();
    }

    void becomeReplay() {
        drive.session.simMode = "replay";
        knowOwnCar();
    }

    /** A variable of the own car, a per-car array, and the clock that all cars get. */
    void publishValuesOfBothCars() {
        knowOwnCar();
        block.addVariable("Speed", irsdk_int);
        block.addVariable("SessionTime", irsdk_double);
        block.addVariable("SessionTimeRemain", irsdk_double);
        block.addVariable("SessionTick", irsdk_int);
        block.addVariable("CarIdxLap", irsdk_int, kSlots);
    }

    /** A variable of the own car and a per-car array, for take(speed, lap). */
    void addSpeedAndLap() {
        block.addVariable("Speed", irsdk_int);
        block.addVariable("CarIdxLap", irsdk_int, kSlots);
    }

    void take(int speed, int lap) {
        block.set("Speed", speed);
        block.setAll("CarIdxLap", lap);
        take();
    }

    /** The first snapshot of another reader of the same session. */
    void takeFirst(iRTelemetryReader& fresh, TestBlock& snapshot) const {
        fresh.setYaml(drive.session.toYaml().constData());
        fresh.updateCarList();
        fresh.getRawData(&snapshot.header(), snapshot.varHeaders(), snapshot.snapshot(),
                         snapshot.snapshotLength());
    }

    void take() {
        reader.getRawData(&block.header(), block.varHeaders(), block.snapshot(),
                          block.snapshotLength());
    }

    /** Read only: a sample that is handed out for changes is filled in another way. */
    const Sample& sampleOf(int slot) const { return std::as_const(reader).sample(slot); }
    const Sample& own() const { return sampleOf(kOwnCar); }
    const Sample& other() const { return sampleOf(kLaterCar); }

    QVariant ownValue(const QString& key) const { return own().value(key).value; }
    QVariant otherValue(const QString& key) const { return other().value(key).value; }
};

}  // namespace

TEST_F(Sampling, StoresEachTypeAsTheMatchingVariant) {
    knowOwnCar();
    block.addVariable("AChar", irsdk_char);
    block.addVariable("ABool", irsdk_bool);
    block.addVariable("AnInt", irsdk_int);
    block.addVariable("ABitField", irsdk_bitField);
    block.addVariable("AFloat", irsdk_float);
    block.addVariable("ADouble", irsdk_double);
    block.set("AChar", -5);
    block.set("ABool", 2);
    block.set("AnInt", -123456);
    block.set("ABitField", -2147483648.0);
    block.set("AFloat", 0.1F);
    block.set("ADouble", 0.1);
    take();
    EXPECT_EQ(ownValue("achar").typeId(), QMetaType::Int);
    EXPECT_EQ(ownValue("achar").toInt(), -5);
    EXPECT_EQ(ownValue("abool").typeId(), QMetaType::Bool);
    EXPECT_EQ(ownValue("abool").toBool(), true);
    EXPECT_EQ(ownValue("anint").typeId(), QMetaType::Int);
    EXPECT_EQ(ownValue("anint").toInt(), -123456);
    EXPECT_EQ(ownValue("abitfield").typeId(), QMetaType::Int);
    EXPECT_EQ(ownValue("abitfield").toInt(), std::numeric_limits<int>::min());
    EXPECT_EQ(ownValue("afloat").typeId(), QMetaType::Float);
    EXPECT_EQ(ownValue("afloat").value<float>(), 0.1F);
    EXPECT_EQ(ownValue("adouble").typeId(), QMetaType::Double);
    EXPECT_EQ(ownValue("adouble").toDouble(), 0.1);
}

TEST_F(Sampling, StoresEachTypeOfAPerCarArrayAsTheMatchingVariant) {
    knowOwnCar();
    block.addVariable("CarIdxABool", irsdk_bool, kSlots);
    block.addVariable("CarIdxAnInt", irsdk_int, kSlots);
    block.addVariable("CarIdxABitField", irsdk_bitField, kSlots);
    block.addVariable("CarIdxAFloat", irsdk_float, kSlots);
    block.addVariable("CarIdxADouble", irsdk_double, kSlots);
    block.set("CarIdxABool", 1, kLaterCar);
    block.set("CarIdxAnInt", -7, kLaterCar);
    block.set("CarIdxABitField", 0x40, kLaterCar);
    block.set("CarIdxAFloat", 0.25, kLaterCar);
    block.set("CarIdxADouble", 0.1, kLaterCar);
    take();
    EXPECT_EQ(otherValue("abool"), QVariant(true));
    EXPECT_EQ(otherValue("anint"), QVariant(-7));
    EXPECT_EQ(otherValue("abitfield"), QVariant(0x40));
    EXPECT_EQ(otherValue("afloat"), QVariant(0.25F));
    EXPECT_EQ(otherValue("afloat").typeId(), QMetaType::Float);
    EXPECT_EQ(otherValue("adouble"), QVariant(0.1));
    EXPECT_EQ(sampleOf(0).value("anint").value, QVariant(0));
    EXPECT_EQ(sampleOf(kSlots - 1).value("abool").value, QVariant(false));
}

TEST_F(Sampling, ReplacesTheValuesOfTheTickBefore) {
    knowOwnCar();
    block.addVariable("Speed", irsdk_float);
    block.addVariable("CarIdxLap", irsdk_int, kSlots);
    for (int tick = 1; tick <= 3; ++tick) {
        block.set("Speed", 10.0 * tick);
        block.set("CarIdxLap", tick, kLaterCar);
        take();
        EXPECT_EQ(ownValue("speed"), QVariant(10.0F * static_cast<float>(tick)));
        EXPECT_EQ(otherValue("lap"), QVariant(tick));
    }
}

TEST_F(Sampling, ReadsOnlyTheFirstCharacterForAnyCount) {
    knowOwnCar();
    block.addVariable("Text", irsdk_char, 8);
    block.addVariable("None", irsdk_char, 1);
    block.setText("Text", "\xF0zz");
    block.setText("None", "n");
    block.variable("None").count = 0;
    take();
    EXPECT_EQ(ownValue("text"), QVariant(-16));
    EXPECT_EQ(ownValue("none"), QVariant(int{'n'}));
    block.variable("None").count = -3;
    block.setText("Text", "b");
    take();
    EXPECT_EQ(ownValue("text"), QVariant(int{'b'}));
}

TEST_F(Sampling, GivesAPerCarCharacterArrayOnlyToTheFirstCar) {
    knowOwnCar();
    block.addVariable("CarIdxMark", irsdk_char, kSlots);
    block.setAll("CarIdxMark", 'x');
    take();
    EXPECT_EQ(sampleOf(0).value("mark").value, QVariant(int{'x'}));
    EXPECT_FALSE(sampleOf(1).containsValue("mark"));
}

TEST_F(Sampling, ReadsEveryByteExceptZeroAsTrue) {
    knowOwnCar();
    block.addVariable("Flag", irsdk_bool);
    for (const int byte : {0, 1, 2, 127, 128, 255}) {
        block.set("Flag", byte);
        take();
        EXPECT_EQ(ownValue("flag").toBool(), byte != 0) << byte;
    }
}

TEST_F(Sampling, KeepsTheLastElementOfAnOwnCarsArray) {
    knowOwnCar();
    block.addVariable("Wheels", irsdk_float, 4, "rad/s");
    for (int wheel = 0; wheel < 4; ++wheel) {
        block.set("Wheels", 10.0 + wheel, wheel);
    }
    take();
    EXPECT_EQ(ownValue("wheels"), QVariant(13.0F));
    EXPECT_EQ(own().value("wheels").unit(), "rad/s");
}

TEST_F(Sampling, LowercasesNamesAndKeepsUnits) {
    knowOwnCar();
    block.addVariable("SessionTick", irsdk_int, 1, "kPa/S");
    block.addVariable("CarIdxLapDistPct", irsdk_float, kSlots, "%Of");
    take();
    EXPECT_TRUE(own().containsValue("sessiontick"));
    EXPECT_FALSE(own().containsValue("SessionTick"));
    EXPECT_EQ(own().value("sessiontick").unit(), "kPa/S");
    EXPECT_EQ(other().value("lapdistpct").unit(), "%Of");
}

TEST_F(Sampling, ReadsNamesAndUnitsAsUtf8) {
    knowOwnCar();
    block.addVariable("L\xC3\x84NGE", irsdk_int, 1,
                      "\xC2\xB0"
                      "C");
    take();
    EXPECT_TRUE(own().containsValue(QString::fromUtf8("l\xC3\xA4nge")));
    EXPECT_EQ(own().value(QString::fromUtf8("l\xC3\xA4nge")).unit(), QString::fromUtf8("\xC2\xB0"
                                                                                       "C"));
}

TEST_F(Sampling, ReadsNamesAndUnitsWithoutATerminatingZero) {
    knowOwnCar();
    const std::string name(32, 'N');
    const std::string unit(32, 'U');
    block.addVariable(name, irsdk_int, 1, unit);
    // The bytes after each text in the table must not become part of it.
    std::memset(block.variable(0).desc, 'D', sizeof block.variable(0).desc);
    block.addVariable("CarIdx" + std::string(26, 'M'), irsdk_int, kSlots, unit);
    take();
    EXPECT_TRUE(own().containsValue(QString(32, 'n')));
    EXPECT_EQ(own().value(QString(32, 'n')).unit(), QString(32, 'U'));
    EXPECT_TRUE(other().containsValue(QString(26, 'm')));
    EXPECT_EQ(other().value(QString(26, 'm')).unit(), QString(32, 'U'));
}

TEST_F(Sampling, GivesPerCarArraysToEveryCarWithoutThePrefix) {
    knowOwnCar();
    block.addVariable("CarIdxLap", irsdk_int, kSlots);
    for (int slot = 0; slot < kSlots; ++slot) {
        block.set("CarIdxLap", 100 + slot, slot);
    }
    take();
    for (int slot = 0; slot < kSlots; ++slot) {
        if (slot == kOwnCar) {
            EXPECT_FALSE(sampleOf(slot).containsValue("lap"));
        } else {
            EXPECT_EQ(sampleOf(slot).value("lap").value, QVariant(100 + slot));
        }
        EXPECT_FALSE(sampleOf(slot).containsValue("caridxlap"));
    }
}

TEST_F(Sampling, RecognizesPerCarArraysByTheirPrefixInAnyCase) {
    knowOwnCar();
    block.addVariable("CARIDXUpper", irsdk_int, kSlots);
    block.addVariable("caridxLower", irsdk_int, kSlots);
    block.addVariable("CarIdx", irsdk_int, kSlots);
    block.addVariable("MyCarIdxMark", irsdk_int, 1);
    block.addVariable("CarId", irsdk_int, 1);
    block.setAll("CarIdx", 4);
    take();
    EXPECT_TRUE(other().containsValue("upper"));
    EXPECT_TRUE(other().containsValue("lower"));
    EXPECT_EQ(otherValue(""), QVariant(4)) << "only the prefix gives the empty key";
    EXPECT_TRUE(own().containsValue("mycaridxmark"));
    EXPECT_FALSE(other().containsValue("mycaridxmark"));
    EXPECT_TRUE(own().containsValue("carid"));
}

TEST_F(Sampling, IgnoresTheOwnElementInALiveSession) {
    knowOwnCar();
    block.addVariable("Lap", irsdk_int);
    block.addVariable("CarIdxLap", irsdk_int, kSlots);
    block.set("Lap", 5);
    block.setAll("CarIdxLap", 9);
    take();
    EXPECT_EQ(ownValue("lap"), QVariant(5));
    EXPECT_EQ(otherValue("lap"), QVariant(9));
}

TEST_F(Sampling, StoresTheOwnElementInAReplay) {
    becomeReplay();
    block.addVariable("Lap", irsdk_int);
    block.addVariable("CarIdxLap", irsdk_int, kSlots);
    block.set("Lap", 5);
    block.setAll("CarIdxLap", 9);
    take();
    EXPECT_EQ(ownValue("lap"), QVariant(9)) << "the array comes later in the table";
}

TEST_F(Sampling, StoresTheLaterVariableInAReplay) {
    becomeReplay();
    block.addVariable("CarIdxLap", irsdk_int, kSlots);
    block.addVariable("Lap", irsdk_int);
    block.set("Lap", 5);
    block.setAll("CarIdxLap", 9);
    take();
    EXPECT_EQ(ownValue("lap"), QVariant(5));
}

TEST_F(Sampling, StoresTheOwnElementUntilItIsKnownWhetherItIsAReplay) {
    drive.session.simMode.clear();
    knowOwnCar();
    block.addVariable("CarIdxLap", irsdk_int, kSlots);
    block.setAll("CarIdxLap", 9);
    take();
    EXPECT_EQ(ownValue("lap"), QVariant(9));

    drive.session.simMode = "full";
    knowOwnCar();
    block.setAll("CarIdxLap", 10);
    take();
    EXPECT_EQ(ownValue("lap"), QVariant(9)) << "a value that is no longer written stays";
    EXPECT_EQ(otherValue("lap"), QVariant(10));
}

TEST_F(Sampling, FollowsTheOwnCarToAnotherSlot) {
    knowOwnCar();
    addSpeedAndLap();
    take(50, 1);
    knowOwnCar("7");
    take(60, 2);
    EXPECT_EQ(ownValue("speed"), QVariant(50));
    EXPECT_EQ(otherValue("speed"), QVariant(60));
    EXPECT_EQ(ownValue("lap"), QVariant(2));
    EXPECT_EQ(otherValue("lap"), QVariant(1));
}

TEST_F(Sampling, StoresTheLaterOfTwoVariablesWithTheSameKey) {
    knowOwnCar();
    block.addVariable("Speed", irsdk_int, 1, "a");
    block.addVariable("SPEED", irsdk_float, 1, "b");
    block.addVariable("CarIdxLap", irsdk_int, kSlots, "a");
    block.addVariable("CARIDXLAP", irsdk_float, kSlots, "b");
    block.set("Speed", 1);
    block.set("SPEED", 2.5);
    block.setAll("CarIdxLap", 1);
    block.setAll("CARIDXLAP", 2.5);
    for (int tick = 0; tick < 2; ++tick) {
        take();
        EXPECT_EQ(ownValue("speed"), QVariant(2.5F));
        EXPECT_EQ(own().value("speed").unit(), "b");
        EXPECT_EQ(otherValue("lap"), QVariant(2.5F));
        EXPECT_EQ(other().value("lap").unit(), "b");
    }
}

TEST_F(Sampling, RestoresAValueThatWasChanged) {
    knowOwnCar();
    block.addVariable("Speed", irsdk_int, 1, "m/s");
    block.addVariable("CarIdxLap", irsdk_int, kSlots);
    take(50, 4);
    reader.sample(kOwnCar).setValue("speed", QString("text"), "x");
    reader.sample(kLaterCar).removeValue("lap");
    take();
    EXPECT_EQ(ownValue("speed"), QVariant(50));
    EXPECT_EQ(own().value("speed").unit(), "m/s");
    EXPECT_EQ(otherValue("lap"), QVariant(4));
    reader.sample(kOwnCar).clear();
    reader.sample(kLaterCar).clear();
    take();
    EXPECT_EQ(ownValue("speed"), QVariant(50));
    EXPECT_EQ(otherValue("lap"), QVariant(4));
}

TEST_F(Sampling, FillsSamplesThatWereHandedOutLikeOthers) {
    publishValuesOfBothCars();
    iRTelemetryReader looking;
    looking.setYaml(drive.session.toYaml().constData());
    looking.updateCarList();
    for (int tick = 1; tick <= 20; ++tick) {
        block.set("Speed", tick);
        block.set("SessionTick", tick);
        block.setAll("CarIdxLap", 1000 + tick);
        take();
        looking.getRawData(&block.header(), block.varHeaders(), block.snapshot(),
                           block.snapshotLength());
        for (int slot = 0; slot < kSlots; ++slot) {
            const Sample& handedOut = reader.sample(slot);
            EXPECT_EQ(handedOut.valueNameList(),
                      std::as_const(looking).sample(slot).valueNameList());
        }
        EXPECT_EQ(ownValue("speed"), QVariant(tick));
        EXPECT_EQ(otherValue("lap"), QVariant(1000 + tick));
        EXPECT_EQ(otherValue("sessiontick").toInt(), tick);
    }
}

TEST_F(Sampling, FillsTheSlotsThatCameBackAfterAResize) {
    knowOwnCar();
    block.addVariable("CarIdxLap", irsdk_int, kSlots);
    block.setAll("CarIdxLap", 4);
    take();
    reader.resize(5);
    take();
    reader.resize(kSlots);
    take();
    EXPECT_EQ(otherValue("lap"), QVariant(4));
    EXPECT_EQ(sampleOf(kSlots - 1).value("lap").value, QVariant(4));
}

TEST_F(Sampling, DoesNotChangeCopiesOfASample) {
    knowOwnCar();
    addSpeedAndLap();
    take(1, 1);
    const Sample ownBefore = own();
    const Sample otherBefore = other();
    take(2, 2);
    EXPECT_EQ(ownBefore.value("speed").value, QVariant(1));
    EXPECT_EQ(otherBefore.value("lap").value, QVariant(1));
    EXPECT_EQ(ownValue("speed"), QVariant(2));
    EXPECT_EQ(otherValue("lap"), QVariant(2));
}

TEST_F(Sampling, DoesNotChangeAnyCopyThatAHostKeeps) {
    publishValuesOfBothCars();
    struct Kept {
        int tick;
        Sample own;
        Sample other;
    };
    // A host may keep the samples of no tick, of some ticks or of all. The reader checks every few
    // hundred ticks whether a host still keeps all of them.
    constexpr int kTicks = 600;
    int tick = 0;
    for (std::size_t keeps = 0; keeps <= 6; ++keeps) {
        std::deque<Kept> kept;
        for (int i = 0; i < kTicks; ++i) {
            ++tick;
            block.set("Speed", tick);
            block.set("SessionTick", tick);
            block.setAll("CarIdxLap", 1000 + tick);
            take();
            kept.push_back({tick, drive.own().sample, drive.car(kLaterCar).sample});
            while (kept.size() > keeps) {
                kept.pop_front();
            }
            EXPECT_EQ(drive.own().sample.value("speed").value, QVariant(tick));
            EXPECT_EQ(drive.car(kLaterCar).sample.value("lap").value, QVariant(1000 + tick));
            for (const Kept& samples : kept) {
                EXPECT_EQ(samples.own.value("speed").value, QVariant(samples.tick));
                EXPECT_EQ(samples.other.value("lap").value, QVariant(1000 + samples.tick));
                EXPECT_EQ(samples.other.value("sessiontick").value.toInt(), samples.tick);
            }
        }
    }
}

// Values that are copied in each tick have new addresses. This is certain under the address
// sanitizer, which delays the reuse of freed memory.
TEST_F(Sampling, ReusesValuesAgainWhenAHostThatKeptAllReleasesThem) {
    publishValuesOfBothCars();
    constexpr int kKeptTicks = 20;
    constexpr int kTicksUntilNoticed = 300;
    constexpr int kObservedTicks = 100;
    constexpr std::size_t kGenerations = 4;
    const auto takeAnother = [this](int tick) {
        block.set("Speed", tick);
        take();
        return drive.own().sample;
    };
    std::deque<Sample> kept;
    for (int tick = 1; tick <= kKeptTicks; ++tick) {
        kept.push_back(takeAnother(tick));
    }
    std::set<const void*> places;
    for (int tick = 1; tick <= kTicksUntilNoticed + kObservedTicks; ++tick) {
        kept = {kept.back(), takeAnother(tick)};
        if (tick > kTicksUntilNoticed) {
            const auto& values = std::as_const(kept.back()).data();
            places.insert(&values.constFind("speed").value());
        }
    }
    EXPECT_LE(places.size(), kGenerations);
}

TEST_F(Sampling, DropsTheOwnValuesWhileTheOwnCarIsUnknown) {
    block.addVariable("Speed", irsdk_float);
    block.addVariable("SessionTime", irsdk_double);
    block.addVariable("SessionTick", irsdk_int);
    block.addVariable("CarIdxLap", irsdk_int, kSlots);
    block.setAll("CarIdxLap", 2);
    take();
    for (int slot = 0; slot < kSlots; ++slot) {
        EXPECT_EQ(sampleOf(slot).valueNameList(), QStringList({"lap"})) << slot;
    }
}

TEST_F(Sampling, DropsTheOwnValuesWhileTheOwnCarIsBeyondTheSlots) {
    for (const QByteArray& own : {QByteArray("64"), QByteArray("-7")}) {
        knowOwnCar(own);
        block = TestBlock();
        block.addVariable("SessionTime", irsdk_double);
        block.addVariable("CarIdxLap", irsdk_int, kSlots);
        block.setAll("CarIdxLap", 2);
        iRTelemetryReader fresh;
        takeFirst(fresh, block);
        for (int slot = 0; slot < kSlots; ++slot) {
            EXPECT_EQ(std::as_const(fresh).sample(slot).valueNameList(), QStringList({"lap"}));
        }
    }
}

TEST_F(Sampling, GivesEveryCarTheSessionClockOfTheOwn) {
    knowOwnCar();
    block.addVariable("SessionTime", irsdk_double, 1, "s");
    block.addVariable("SessionTimeRemain", irsdk_double, 1, "sec");
    block.addVariable("SessionTick", irsdk_int, 1, "ticks");
    block.set("SessionTime", 12.5);
    block.set("SessionTimeRemain", 100.25);
    block.set("SessionTick", 750);
    take();
    for (int slot = 0; slot < kSlots; ++slot) {
        const Sample& sample = sampleOf(slot);
        EXPECT_EQ(sample.value("sessiontime").value, QVariant(12.5));
        EXPECT_EQ(sample.value("sessiontime").unit(), "s");
        EXPECT_EQ(sample.value("sessiontimeremain").value, QVariant(100.25));
        EXPECT_EQ(sample.value("sessiontimeremain").unit(), "sec");
        const TLM::SDK::Value tick = sample.value("sessiontick");
        EXPECT_EQ(tick.value.toULongLong(), 750U);
        if (slot == kOwnCar) {
            EXPECT_EQ(tick.value.typeId(), QMetaType::Int);
            EXPECT_EQ(tick.unit(), "ticks");
        } else {
            EXPECT_EQ(tick.value.typeId(), QMetaType::ULongLong);
            EXPECT_TRUE(tick.unit().isEmpty());
        }
    }
}

TEST_F(Sampling, UsesTheClockOfTheSameTick) {
    knowOwnCar();
    // The clock is last in the table and must still be used for the other cars.
    block.addVariable("CarIdxLap", irsdk_int, kSlots);
    block.addVariable("SessionTime", irsdk_double, 1, "s");
    block.addVariable("SessionTick", irsdk_int);
    for (int tick = 1; tick <= 3; ++tick) {
        block.set("SessionTime", tick * 0.5);
        block.set("SessionTick", tick);
        take();
        EXPECT_EQ(otherValue("sessiontime"), QVariant(tick * 0.5));
        EXPECT_EQ(otherValue("sessiontick").toULongLong(), static_cast<quint64>(tick));
    }
}

TEST_F(Sampling, PrefersTheOwnCarsClockToAPerCarArray) {
    knowOwnCar();
    block.addVariable("SessionTick", irsdk_int);
    block.addVariable("CarIdxSessionTick", irsdk_int, kSlots);
    block.set("SessionTick", 8);
    block.setAll("CarIdxSessionTick", 1);
    take();
    EXPECT_EQ(otherValue("sessiontick"), QVariant(quint64{8}));
}

TEST_F(Sampling, GivesOtherCarsInvalidValuesForAMissingClock) {
    knowOwnCar();
    block.addVariable("Speed", irsdk_float);
    take();
    EXPECT_TRUE(other().containsValue("sessiontime"));
    EXPECT_FALSE(otherValue("sessiontime").isValid());
    EXPECT_TRUE(other().containsValue("sessiontimeremain"));
    EXPECT_FALSE(otherValue("sessiontimeremain").isValid());
    EXPECT_EQ(otherValue("sessiontick"), QVariant(quint64{0}));
    EXPECT_FALSE(own().containsValue("sessiontime"));
}

TEST_F(Sampling, GivesOtherCarsAClockOfAnyType) {
    struct Clock {
        int type;
        double reading;
        quint64 tick;
    };
    const std::vector<Clock> clocks = {
        {irsdk_char, 41.0, 41},     {irsdk_char, -1.0, std::numeric_limits<quint64>::max()},
        {irsdk_bool, 7.0, 1},       {irsdk_bool, 0.0, 0},
        {irsdk_int, 41.0, 41},      {irsdk_int, -1.0, std::numeric_limits<quint64>::max()},
        {irsdk_bitField, 41.0, 41}, {irsdk_float, 41.0, 41},
        {irsdk_double, 41.0, 41},   {kUnknownType, 41.0, 0}};
    for (const Clock& clock : clocks) {
        Drive any({{"SessionTick", clock.type}, {"SessionTime", irsdk_float}});
        any.publishSession();
        any.reader.updateCarList();
        if (clock.type == kUnknownType) {
            // No variable before it in the table has a value that it could get.
            any.block.variable("SessionTime").count = 0;
            any.block.variable("SessionTimeRemain").count = 0;
        } else {
            any.block.set("SessionTick", clock.reading);
            any.block.set("SessionTime", 0.5);
        }
        any.takeSnapshot();
        const Sample& sample = any.car(kLaterCar).sample;
        EXPECT_EQ(sample.value("sessiontick").value, QVariant(clock.tick)) << clock.type;
        if (clock.type != kUnknownType) {
            EXPECT_EQ(sample.value("sessiontime").value, QVariant(0.5F));
        }
    }
}

TEST_F(Sampling, GivesEverythingToTheOwnCarWhileLoadingFromDisk) {
    knowOwnCar();
    reader.setDiskLoading(true);
    block.addVariable("Speed", irsdk_float);
    block.addVariable("SessionTick", irsdk_int);
    block.addVariable("SessionTime", irsdk_double);
    block.addVariable("CarIdxLap", irsdk_int, kSlots, "laps");
    for (int slot = 0; slot < kSlots; ++slot) {
        block.set("CarIdxLap", 100 + slot, slot);
    }
    take();
    EXPECT_EQ(ownValue("caridxlap"), QVariant(100 + kSlots - 1)) << "the last car's element";
    EXPECT_EQ(own().value("caridxlap").unit(), "laps");
    EXPECT_FALSE(own().containsValue("lap"));
    EXPECT_TRUE(own().containsValue("speed"));
    for (int slot = 0; slot < kSlots; ++slot) {
        if (slot != kOwnCar) {
            EXPECT_TRUE(sampleOf(slot).isEmpty());
        }
    }
}

TEST_F(Sampling, GivesPerCarArraysToEveryCarAgainAfterLoadingFromDisk) {
    knowOwnCar();
    block.addVariable("CarIdxLap", irsdk_int, kSlots);
    block.setAll("CarIdxLap", 3);
    take();
    reader.setDiskLoading(true);
    block.setAll("CarIdxLap", 4);
    take();
    EXPECT_EQ(otherValue("lap"), QVariant(3));
    EXPECT_EQ(ownValue("caridxlap"), QVariant(4));
    reader.setDiskLoading(false);
    block.setAll("CarIdxLap", 5);
    take();
    EXPECT_EQ(otherValue("lap"), QVariant(5));
    EXPECT_EQ(ownValue("caridxlap"), QVariant(4));
}

TEST_F(Sampling, DropsEverythingWhileLoadingFromDiskWithoutAnOwnCar) {
    reader.setDiskLoading(true);
    block.addVariable("Speed", irsdk_float);
    block.addVariable("CarIdxLap", irsdk_int, kSlots);
    take();
    for (int slot = 0; slot < kSlots; ++slot) {
        EXPECT_TRUE(sampleOf(slot).isEmpty());
    }
}

TEST_F(Sampling, KeepsValuesThatTheSnapshotNoLongerHas) {
    knowOwnCar();
    block.addVariable("Speed", irsdk_int);
    block.addVariable("Gear", irsdk_int);
    block.set("Speed", 50);
    block.set("Gear", 4);
    take();
    block.set("Speed", 60);
    block.set("Gear", 5);
    block.header().numVars = 1;
    take();
    EXPECT_EQ(ownValue("speed"), QVariant(60));
    EXPECT_EQ(ownValue("gear"), QVariant(4));
}

TEST_F(Sampling, IgnoresVariablesPastTheTableOfTheFirstTick) {
    knowOwnCar();
    block.addVariable("Speed", irsdk_int);
    block.addVariable("Gear", irsdk_int);
    block.header().numVars = 1;
    take();
    block.header().numVars = 2;
    block.set("Gear", 4);
    block.set("Speed", 7);
    take();
    EXPECT_FALSE(own().containsValue("gear"));
    EXPECT_EQ(ownValue("speed"), QVariant(7));
}

TEST_F(Sampling, KeepsNamesAndUnitsOfTheFirstTick) {
    knowOwnCar();
    block.addVariable("Speed", irsdk_int, 1, "m/s");
    block.addVariable("CarIdxLap", irsdk_int, kSlots, "laps");
    take();
    std::strcpy(block.variable(0).name, "Other");
    std::strcpy(block.variable(0).unit, "km/h");
    std::strcpy(block.variable(1).name, "Another");
    block.poke(static_cast<std::size_t>(block.header().varHeaderOffset), std::int32_t{irsdk_int});
    std::int32_t speed = 90;
    std::memcpy(block.snapshot(), &speed, sizeof speed);
    take();
    EXPECT_EQ(ownValue("speed"), QVariant(90));
    EXPECT_EQ(own().value("speed").unit(), "m/s");
    EXPECT_FALSE(own().containsValue("other"));
    EXPECT_FALSE(own().containsValue("another"));
    EXPECT_TRUE(other().containsValue("lap"));
}

TEST_F(Sampling, UsesTypesOffsetsAndCountsOfEveryTick) {
    knowOwnCar();
    block.addVariable("First", irsdk_float);
    block.addVariable("Second", irsdk_float);
    block.addVariable("CarIdxLap", irsdk_int, kSlots);
    block.set("First", 1.5);
    block.set("Second", 2.5);
    block.setAll("CarIdxLap", 6);
    take();
    std::swap(block.variable("First").offset, block.variable("Second").offset);
    take();
    EXPECT_EQ(ownValue("first"), QVariant(2.5F));
    EXPECT_EQ(ownValue("second"), QVariant(1.5F));

    block.variable("First").type = irsdk_bool;
    block.variable("CarIdxLap").count = 5;
    block.setAll("CarIdxLap", 7);
    take();
    EXPECT_EQ(ownValue("first").typeId(), QMetaType::Bool);
    EXPECT_EQ(sampleOf(4).value("lap").value, QVariant(7));
    EXPECT_EQ(sampleOf(5).value("lap").value, QVariant(6));
}

TEST_F(Sampling, BuildsTheTableWithTheFirstTickThatHasVariables) {
    knowOwnCar();
    block.addVariable("Speed", irsdk_int);
    for (const int count : {0, -1, std::numeric_limits<int>::min()}) {
        block.header().numVars = count;
        take();
        EXPECT_TRUE(own().isEmpty());
    }
    block.header().numVars = 1;
    take();
    EXPECT_TRUE(own().containsValue("speed"));
}

TEST_F(Sampling, KeepsTheTableAfterATickWithoutVariables) {
    knowOwnCar();
    block.addVariable("Speed", irsdk_int);
    block.set("Speed", 1);
    take();
    block.header().numVars = -5;
    block.set("Speed", 2);
    take();
    EXPECT_EQ(ownValue("speed"), QVariant(1));
    block.header().numVars = 1;
    take();
    EXPECT_EQ(ownValue("speed"), QVariant(2));
}

TEST_F(Sampling, StoresNothingForACountOfZeroOrLess) {
    knowOwnCar();
    for (const int count : {0, -1, std::numeric_limits<int>::min()}) {
        for (const int type :
             {int{irsdk_bool}, int{irsdk_int}, int{irsdk_float}, int{irsdk_double}, kUnknownType}) {
            block.variable(block.addVariable("Speed", irsdk_int)).count = count;
            block.variable("Speed").type = type;
            take();
            EXPECT_FALSE(own().containsValue("speed"));
            block = TestBlock();
        }
    }
}

TEST_F(Sampling, IgnoresElementsPastTheLastSlot) {
    knowOwnCar();
    block.addVariable("CarIdxLap", irsdk_int, 100);
    block.addVariable("CarIdxFew", irsdk_int, 2);
    block.setAll("CarIdxLap", 3);
    block.setAll("CarIdxFew", 4);
    take();
    EXPECT_EQ(sampleOf(kSlots - 1).value("lap").value, QVariant(3));
    EXPECT_EQ(sampleOf(1).value("few").value, QVariant(4));
    EXPECT_FALSE(sampleOf(2).containsValue("few"));
}

TEST_F(Sampling, StoresAnInvalidValueForAnUnknownTypeAtTheStart) {
    knowOwnCar();
    block.addVariable("Strange", kUnknownType, 1, "x");
    block.addVariable("CarIdxStrange2", -1, kSlots, "y");
    take();
    EXPECT_TRUE(own().containsValue("strange"));
    EXPECT_FALSE(ownValue("strange").isValid());
    EXPECT_EQ(own().value("strange").unit(), "x");
    EXPECT_TRUE(other().containsValue("strange2"));
    EXPECT_FALSE(otherValue("strange2").isValid());
    EXPECT_EQ(other().value("strange2").unit(), "y");
    EXPECT_FALSE(own().containsValue("strange2"));
}

TEST_F(Sampling, ConvertsElementsWithoutASlotToo) {
    knowOwnCar();
    TestBlock odd;
    odd.addVariable("CarIdxLap", irsdk_int, kSlots + 6);
    odd.addVariable("Strange", irsdk_int);
    odd.variable("Strange").type = 6;
    odd.set("CarIdxLap", 7, kSlots - 1);
    odd.set("CarIdxLap", 9, kSlots + 5);
    iRTelemetryReader fresh;
    takeFirst(fresh, odd);
    EXPECT_EQ(std::as_const(fresh).sample(kOwnCar).value("strange").value, QVariant(9));
}

TEST_F(Sampling, SurvivesChangesThroughAKeptReference) {
    knowOwnCar();
    Sample& kept = drive.reader.sample(kLaterCar);
    drive.putOther(kLaterCar, 0.25).tick();
    kept.setValue("lapdistpct", QVariant(QString("a text of some length")), "odd");
    drive.tick();
    EXPECT_EQ(kept.value("lapdistpct").value, QVariant(0.25F));
    kept.removeValue("lapdistpct");
    drive.tick();
    EXPECT_EQ(kept.value("lapdistpct").value, QVariant(0.25F));
    drive.takeSnapshot();
    kept.clear();
    drive.endTick();
    EXPECT_EQ(drive.car(kLaterCar).current.lapDistPct, -1.0F);
    kept = Sample();
    drive.tick();
    EXPECT_EQ(kept.value("lapdistpct").value, QVariant(0.25F));
}

TEST_F(Sampling, StoresTheValueConvertedBeforeForAnUnknownType) {
    knowOwnCar();
    for (const int type :
         {6, 9, -1, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
        TestBlock odd;
        odd.addVariable("Gear", irsdk_int);
        odd.addVariable("Strange", irsdk_int, 1, "x");
        odd.addVariable("Wheels", irsdk_float, 2);
        odd.addVariable("CarIdxStrange", irsdk_int, kSlots, "y");
        odd.addVariable("CarIdxLap", irsdk_int, kSlots);
        odd.addVariable("Last", irsdk_int);
        odd.variable("Strange").type = type;
        odd.variable("CarIdxStrange").type = type;
        odd.variable("Last").type = type;
        odd.set("Gear", 4);
        odd.set("Wheels", 1.5, 0);
        odd.set("Wheels", 2.5, 1);
        odd.set("CarIdxLap", 33, kSlots - 1);
        iRTelemetryReader fresh;
        takeFirst(fresh, odd);
        const Sample& sample = std::as_const(fresh).sample(kOwnCar);
        EXPECT_EQ(sample.value("strange").value, QVariant(4)) << type;
        EXPECT_EQ(sample.value("strange").unit(), "x");
        EXPECT_EQ(std::as_const(fresh).sample(kLaterCar).value("strange").value, QVariant(2.5F));
        EXPECT_EQ(std::as_const(fresh).sample(kLaterCar).value("strange").unit(), "y");
        EXPECT_EQ(sample.value("last").value, QVariant(33));
    }
}

TEST_F(Sampling, ConvertsTheOwnElementThatALiveSessionIgnores) {
    knowOwnCar();
    block.addVariable("CarIdxLap", irsdk_int, kOwnCar + 1);
    block.addVariable("Strange", kUnknownType);
    block.set("CarIdxLap", 21, kOwnCar);
    take();
    EXPECT_EQ(ownValue("strange"), QVariant(21));
}

TEST_F(Sampling, ConvertsAnElementWithoutAnOwnCar) {
    block.addVariable("Speed", irsdk_int);
    block.addVariable("CarIdxStrange", kUnknownType, kSlots);
    block.set("Speed", 21);
    take();
    EXPECT_EQ(otherValue("strange"), QVariant(21));
}

TEST_F(Sampling, KeepsNoConvertedValueForTheNextTick) {
    knowOwnCar();
    block.addVariable("Strange", kUnknownType);
    block.addVariable("Gear", irsdk_int);
    block.set("Gear", 4);
    take();
    take();
    EXPECT_TRUE(own().containsValue("strange"));
    EXPECT_FALSE(ownValue("strange").isValid());
}

TEST_F(Sampling, SkipsAVariableOutsideTheSnapshot) {
    knowOwnCar();
    addSpeedAndLap();
    block.addVariable("Gear", irsdk_int);
    block.set("Speed", 1);
    block.set("Gear", 2);
    const int length = block.snapshotLength();
    const int max = std::numeric_limits<int>::max();
    const int min = std::numeric_limits<int>::min();
    for (const int offset : {-1, -4, min, length - 3, length, length + 1, max, max - 3}) {
        block.variable("Speed").offset = offset;
        block.variable("CarIdxLap").offset = offset;
        take();
        EXPECT_FALSE(own().containsValue("speed")) << offset;
        EXPECT_FALSE(other().containsValue("lap")) << offset;
        EXPECT_EQ(ownValue("gear"), QVariant(2));
    }
    block.variable("Speed").offset = length - 4;
    take();
    EXPECT_TRUE(own().containsValue("speed")) << "the last offset that fits";
}

TEST_F(Sampling, SkipsAnArrayThatEndsOutsideTheSnapshot) {
    knowOwnCar();
    block.addVariable("Wheels", irsdk_double, 4);
    block.addVariable("CarIdxLap", irsdk_int, kSlots);
    block.addVariable("Strange", kUnknownType);
    const int max = std::numeric_limits<int>::max();
    for (const int count : {block.snapshotLength() / 4 + 1, 1 << 29, 1 << 30, max}) {
        block.variable("Wheels").count = count;
        block.variable("CarIdxLap").count = count;
        take();
        EXPECT_FALSE(own().containsValue("wheels")) << count;
        EXPECT_FALSE(other().containsValue("lap")) << count;
        EXPECT_FALSE(ownValue("strange").isValid()) << "a skipped variable is not converted";
    }
}

TEST_F(Sampling, HandlesAnUnknownTypeOfAnAbsurdCountQuickly) {
    knowOwnCar();
    block.addVariable("Gear", irsdk_int);
    block.addVariable("Strange", kUnknownType);
    block.addVariable("CarIdxStrange", kUnknownType, kSlots);
    block.set("Gear", 4);
    block.variable("Strange").count = std::numeric_limits<int>::max();
    block.variable("CarIdxStrange").count = std::numeric_limits<int>::max();
    take();
    EXPECT_EQ(ownValue("strange"), QVariant(4));
    EXPECT_EQ(sampleOf(kSlots - 1).value("strange").value, QVariant(4));
}

TEST_F(Sampling, AcceptsASnapshotOfAnotherLength) {
    knowOwnCar();
    block.addVariable("Speed", irsdk_int);
    block.addVariable("Gear", irsdk_int);
    block.set("Speed", 1);
    block.set("Gear", 1);
    take();
    block.set("Speed", 2);
    block.set("Gear", 2);
    reader.getRawData(&block.header(), block.varHeaders(), block.snapshot(), 4);
    EXPECT_EQ(ownValue("speed"), QVariant(2));
    EXPECT_EQ(ownValue("gear"), QVariant(1));
    block.set("Speed", 3);
    reader.getRawData(&block.header(), block.varHeaders(), block.snapshot(), 0);
    reader.getRawData(&block.header(), block.varHeaders(), block.snapshot(), -1);
    EXPECT_EQ(ownValue("speed"), QVariant(2));
    take();
    EXPECT_EQ(ownValue("speed"), QVariant(3));
    EXPECT_EQ(ownValue("gear"), QVariant(2));
}

TEST_F(Sampling, ReadsElementsAtAnyAlignment) {
    knowOwnCar();
    block.addVariable("Pad", irsdk_bool);
    block.addVariableAt(1, "Odd", irsdk_double);
    block.addVariableAt(9, "CarIdxOdd", irsdk_float, kSlots);
    block.setBufferLength(9 + 4 * kSlots);
    block.set("Odd", 0.1);
    block.set("CarIdxOdd", 0.5, kLaterCar);
    take();
    EXPECT_EQ(ownValue("odd"), QVariant(0.1));
    EXPECT_EQ(otherValue("odd"), QVariant(0.5F));
}

TEST_F(Sampling, TrustsACallerWhoGivesNoLength) {
    knowOwnCar();
    addSpeedAndLap();
    block.set("Speed", 12);
    block.setAll("CarIdxLap", 5);
    reader.getRawData(&block.header(), block.varHeaders(), block.snapshot());
    EXPECT_EQ(ownValue("speed"), QVariant(12));
    EXPECT_EQ(otherValue("lap"), QVariant(5));
}

// The plugin passes the address of its copy of the table, which is null if the table is empty.
TEST_F(Sampling, DistributesTheSessionClockOfAnEmptyTableWithANullAddress) {
    knowOwnCar();
    block.header().numVars = 0;
    reader.getRawData(&block.header(), nullptr, block.snapshot(), block.snapshotLength());
    for (const char* const key : {"sessiontime", "sessiontimeremain", "sessiontick"}) {
        EXPECT_TRUE(other().containsValue(key)) << key;
        EXPECT_FALSE(own().containsValue(key)) << key;
    }
    EXPECT_EQ(otherValue("sessiontick"), QVariant(0ULL));
}

TEST_F(Sampling, IgnoresNullPointers) {
    knowOwnCar();
    block.addVariable("Speed", irsdk_int);
    const int length = block.snapshotLength();
    reader.getRawData(nullptr, block.varHeaders(), block.snapshot(), length);
    reader.getRawData(&block.header(), nullptr, block.snapshot(), length);
    reader.getRawData(&block.header(), block.varHeaders(), nullptr, length);
    reader.getRawData(nullptr, nullptr, nullptr, 0);
    EXPECT_FALSE(own().containsValue("speed"));
    take();
    EXPECT_TRUE(own().containsValue("speed"));
}

TEST_F(Sampling, KeepsNaNAndInfinities) {
    knowOwnCar();
    block.addVariable("AFloat", irsdk_float);
    block.addVariable("ADouble", irsdk_double);
    block.set("AFloat", std::numeric_limits<float>::infinity());
    block.set("ADouble", -std::numeric_limits<double>::infinity());
    take();
    EXPECT_EQ(ownValue("afloat").toFloat(), std::numeric_limits<float>::infinity());
    EXPECT_EQ(ownValue("adouble").toDouble(), -std::numeric_limits<double>::infinity());
    block.set("AFloat", std::numeric_limits<float>::quiet_NaN());
    block.set("ADouble", std::numeric_limits<double>::quiet_NaN());
    take();
    EXPECT_TRUE(std::isnan(ownValue("afloat").toFloat()));
    EXPECT_TRUE(std::isnan(ownValue("adouble").toDouble()));
}

TEST_F(Sampling, CopiesCurrentToPreviousBeforeTheTick) {
    drive.publishSession();
    drive.putOtherOnPitRoad(kLaterCar, 0.5).tick();
    ASSERT_EQ(drive.car(kLaterCar).previous.status, TLM::SDK::CarStatus::Undefined);
    reader.prepareTick();
    EXPECT_EQ(drive.own().previous.status, TLM::SDK::CarStatus::InPitStall);
    EXPECT_EQ(drive.own().previous.sessionTick, drive.own().current.sessionTick);
    EXPECT_EQ(drive.car(kLaterCar).previous.lapDistPct, 0.5F);
}

TEST_F(Sampling, StartsTheNextLapAfterAClosedOneBeforeTheTick) {
    drive.publishSession().tick();
    const LapPointer closed = reader.lap(kOwnCar);
    const LapPointer next = drive.own().nextLap;
    reader.processLap(kOwnCar, false);
    ASSERT_FALSE(own().isEmpty());
    reader.prepareTick();
    EXPECT_FALSE(reader.isLapReady(kOwnCar));
    EXPECT_EQ(reader.lap(kOwnCar), next);
    EXPECT_NE(reader.lap(kOwnCar), closed);
    EXPECT_TRUE(own().isEmpty()) << "the values of the closed lap are gone";
    EXPECT_FALSE(other().isEmpty()) << "other cars keep theirs";
    EXPECT_FALSE(drive.own().current.lapId.isNull());
    EXPECT_TRUE(drive.own().previous.lapId.isNull());
}
