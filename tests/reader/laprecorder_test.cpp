#include "reader/laprecorder.h"

#include "tests/reader/filledsample.h"
#include "tests/support/printqt.h"

#include <gtest/gtest.h>

#include <bit>
#include <functional>
#include <limits>

namespace readertest {
namespace {

using reader::CarSample;
using reader::LapRecorder;
using TLM::SDK::Lap;
using TLM::SDK::Value;

/** A recorder, and a lap to which the same samples are added by name. */
struct RecordedTwice {
    LapRecorder recorder;
    Lap plain;

    void add(const CarSample& sample) {
        recorder.add(sample);
        plain.addSample(sample);
    }

    void expectSame() const {
        const Lap& lap = *recorder;
        ASSERT_EQ(lap.channels().keys(), plain.channels().keys());
        for (const QString& name : plain.channels().keys()) {
            const QList<double>& left = lap.channel(name)->samples;
            const QList<double>& right = plain.channel(name)->samples;
            EXPECT_EQ(lap.channel(name)->unit(), plain.channel(name)->unit());
            ASSERT_TRUE(std::equal(left.begin(), left.end(), right.begin(), right.end(),
                                   [](double a, double b) {
                                       return std::bit_cast<quint64>(a) ==
                                              std::bit_cast<quint64>(b);
                                   }))
                << name.toStdString();
        }
    }
};

/** Many variables; `names` keeps their names. */
std::vector<SnapshotSource::Variable> manyVariables(std::vector<std::string>& names, int count) {
    std::vector<SnapshotSource::Variable> variables;
    names.resize(static_cast<std::size_t>(count));
    for (std::string& name : names) {
        name = "v" + std::to_string(1000 + variables.size());
        variables.push_back({name.c_str(), irsdk_float, ""});
    }
    return variables;
}

}  // namespace

TEST(LapRecorder, RecordsTheSameAsALapDoesByNames) {
    for (unsigned int seed = 1; seed <= 60; ++seed) {
        SnapshotSource first(variablesOfEveryType(), seed);
        // Adds a name at either end.
        SnapshotSource second({{"zebra", irsdk_int, ""}, {"alpha", irsdk_double, "m"}}, seed);
        reader::SamplingPlan plan;
        CarSample sample;
        RecordedTwice twice{.recorder = LapRecorder(static_cast<qsizetype>(seed)), .plain = {}};
        const auto ticks = 100 + first.number(100);
        for (std::size_t tick = 0; tick < ticks; ++tick) {
            first.change();
            if (first.number(40) != 0 || seed % 2 == 0) {
                first.fill(sample, plan);
            }
            if (seed % 5 == 0 && tick > 40) {
                second.change();
                second.fill(sample, plan);
            }
            if (seed % 3 == 0 && first.number(20) == 0) {
                sample.set("beta", Value(static_cast<int>(tick), "s"));
            }
            if (seed % 7 == 0 && first.number(30) == 0) {
                sample.clear();
            }
            twice.add(sample);
        }
        ASSERT_NO_FATAL_FAILURE(twice.expectSame()) << "seed " << seed;
    }
}

TEST(LapRecorder, HandsOutACompleteLapAndKeepsItComplete) {
    using Look = std::function<qsizetype(const LapRecorder&)>;
    const Look looks[] = {
        [](const LapRecorder& recorder) { return qsizetype{recorder->size()}; },
        [](const LapRecorder& recorder) { return qsizetype{(*recorder).size()}; },
        [](const LapRecorder& recorder) { return qsizetype{recorder.get()->size()}; },
        [](const LapRecorder& recorder) { return qsizetype{recorder.data()->size()}; },
        [](const LapRecorder& recorder) {
            const QSharedPointer<Lap> lap = recorder;
            return lap->channel("speed")->samples.size();
        },
    };
    for (const Look& look : looks) {
        for (const int samplesBefore : {1, 5, 31, 32, 33, 70}) {
            SnapshotSource source(variablesOfEveryType());
            CarSample sample;
            RecordedTwice twice;
            for (int i = 0; i < samplesBefore; ++i) {
                source.change();
                source.fill(sample);
                twice.add(sample);
            }
            EXPECT_EQ(look(twice.recorder), samplesBefore);
            const QSharedPointer<Lap> held = twice.recorder;
            for (int i = 1; i <= 40; ++i) {
                source.fill(sample);
                twice.add(sample);
                ASSERT_EQ(held->size(), samplesBefore + i);
            }
            twice.expectSame();
        }
    }
}

TEST(LapRecorder, IsUsedLikeAPointerToItsLap) {
    LapRecorder recorder;
    EXPECT_TRUE(recorder);
    EXPECT_FALSE(recorder.isNull());
    EXPECT_NE(recorder, nullptr);
    const QSharedPointer<Lap> lap = recorder;
    EXPECT_EQ(recorder, lap);
    EXPECT_EQ(lap, recorder);
    EXPECT_EQ(recorder.get(), lap.data());
    EXPECT_NE(recorder, LapRecorder());

    const auto other = QSharedPointer<Lap>::create();
    recorder = other;
    EXPECT_EQ(recorder, other);
    SnapshotSource source(variablesOfEveryType());
    CarSample sample;
    source.fill(sample);
    recorder.add(sample);
    EXPECT_EQ(other->size(), 1) << "whoever assigned it has it";
    EXPECT_TRUE(lap->isEmpty());
    recorder = QSharedPointer<Lap>();
    EXPECT_TRUE(recorder.isEmpty()) << "it is never null";
}

TEST(LapRecorder, RecordsIntoTheSameLapAsItsCopies) {
    SnapshotSource source(variablesOfEveryType());
    CarSample sample;
    source.fill(sample);
    LapRecorder recorder;
    recorder.add(sample);
    LapRecorder copy = recorder;
    copy.add(sample);
    recorder.add(sample);
    EXPECT_EQ(recorder, copy);
    EXPECT_EQ(copy->size(), 3);
}

TEST(LapRecorder, IsEmptyUntilASampleHasValues) {
    LapRecorder recorder;
    CarSample sample;
    EXPECT_TRUE(recorder.isEmpty());
    recorder.add(sample);
    EXPECT_TRUE(recorder.isEmpty());
    SnapshotSource source(variablesOfEveryType());
    source.fill(sample);
    recorder.add(sample);
    EXPECT_FALSE(recorder.isEmpty());
    recorder.header().setValue("Team", "A", QString());
    recorder.discard();
    EXPECT_TRUE(recorder.isEmpty());
    EXPECT_FALSE(recorder.header().containsValue("Team"));
    recorder.add(sample);
    EXPECT_EQ(recorder->size(), 1);
}

TEST(LapRecorder, DiscardsALapThatIsShared) {
    SnapshotSource source(variablesOfEveryType());
    CarSample sample;
    source.fill(sample);
    LapRecorder recorder;
    recorder.add(sample);
    const QSharedPointer<Lap> held = recorder;
    recorder.discard();
    EXPECT_TRUE(held->isEmpty());
    recorder.add(sample);
    EXPECT_EQ(held->size(), 1);
}

TEST(LapRecorder, ReallocatesFewChannelsInOneTick) {
    std::vector<std::string> names;
    constexpr int kChannels = 40;
    constexpr int kCars = 64;
    constexpr int kTicks = 5000;
    SnapshotSource source(manyVariables(names, kChannels));
    CarSample sample;
    source.fill(sample);
    std::vector<LapRecorder> recorders;
    for (int car = 0; car < kCars; ++car) {
        recorders.emplace_back(512 + 9 * car);
    }
    // The channels are created in the first ticks.
    int tick = 0;
    std::vector<QSharedPointer<TLM::SDK::Channel>> channels;
    const auto drive = [&] {
        for (LapRecorder& recorder : recorders) {
            recorder.add(sample);
        }
        ++tick;
    };
    while (tick < 64) {
        drive();
    }
    const auto entriesIn = [](const LapRecorder& recorder) {
        // Through the header, which does not hand out the lap.
        const auto& lap = static_cast<const Lap&>(recorder.header());
        return lap.channels();
    };
    std::vector<const double*> before;
    qsizetype largest = 0;
    for (; tick < kTicks;) {
        drive();
        std::vector<const double*> places;
        qsizetype movedEntries = 0;
        for (const LapRecorder& recorder : recorders) {
            for (const auto& channel : entriesIn(recorder)) {
                const QList<double>& samples = channel->samples;
                const std::size_t index = places.size();
                places.push_back(samples.constData());
                if (index < before.size() && before[index] != places.back()) {
                    movedEntries += samples.size();
                }
            }
        }
        before = places;
        largest = std::max(largest, movedEntries);
    }
    // Reallocating all in one tick would move ten million entries.
    EXPECT_LT(largest, 1'000'000);
}

TEST(LapRecorder, ReservesTheExpectedLengthButLittleForALapThatBreaksOff) {
    SnapshotSource source(variablesOfEveryType());
    CarSample sample;
    source.fill(sample);
    LapRecorder brokenOff(6000);
    for (int i = 0; i < 50; ++i) {
        brokenOff.add(sample);
    }
    EXPECT_LT(brokenOff->channel("speed")->samples.capacity(), 200);
    LapRecorder driven(6000);
    for (int i = 0; i < 5900; ++i) {
        driven.add(sample);
    }
    EXPECT_GE(driven->channel("speed")->samples.capacity(), 6000);
    EXPECT_LT(driven->channel("speed")->samples.capacity(), 6200);
}

TEST(LapRecorder, ExpectsAnEighthMoreOfTheNextLap) {
    SnapshotSource source(variablesOfEveryType());
    CarSample sample;
    source.fill(sample);
    LapRecorder recorder(100);
    EXPECT_EQ(recorder.expectedOfNext(), 100) << "an empty lap does not count";
    for (int i = 0; i < 8; ++i) {
        recorder.add(sample);
    }
    EXPECT_EQ(recorder.expectedOfNext(), 50) << "a lap that broke off counts little";
    for (int i = 8; i < 800; ++i) {
        recorder.add(sample);
    }
    EXPECT_EQ(recorder.expectedOfNext(), 900);
}

TEST(LapRecorder, AcceptsAbsurdHintsWithoutReservingTheMemory) {
    SnapshotSource source(variablesOfEveryType());
    CarSample sample;
    source.fill(sample);
    for (const qsizetype hint : {std::numeric_limits<qsizetype>::max(),
                                 std::numeric_limits<qsizetype>::min(), qsizetype{0}}) {
        LapRecorder recorder(hint);
        for (int i = 0; i < 300; ++i) {
            recorder.add(sample);
        }
        EXPECT_LT(recorder->channel("speed")->samples.capacity(), 80'000);
        EXPECT_EQ(recorder->size(), 300);
    }
}

TEST(LapRecorder, KeepsTheFarthestDistanceInTheLap) {
    using reader::LapPart;
    LapRecorder recorder;
    const auto farthest = [&recorder] { return recorder.header().value("maxLapDistPct").value; };
    EXPECT_EQ(recorder.noteDistance(0.25F), LapPart::BeforeLine);
    EXPECT_EQ(farthest().typeId(), QMetaType::Float);
    EXPECT_EQ(farthest().toFloat(), 0.25F);
    EXPECT_EQ(recorder.noteDistance(0.9375F), LapPart::BeforeLine);
    EXPECT_EQ(farthest().typeId(), QMetaType::Double);
    EXPECT_EQ(farthest().toDouble(), 0.9375);
    EXPECT_EQ(recorder.noteDistance(0.4375F), LapPart::BeforeLine) << "exactly half a lap";
    EXPECT_EQ(recorder.noteDistance(0.4F), LapPart::AfterLine);
    EXPECT_EQ(farthest().toDouble(), 0.9375);
    recorder->setValue("maxLapDistPct", 0.5, QString());
    EXPECT_EQ(recorder.noteDistance(0.0F), LapPart::BeforeLine) << "a holder of the lap may set it";
}

TEST(LapRecorder, HasTheCourseOfALapThatWasNotHandedOutOnTheWay) {
    SnapshotSource source(variablesOfEveryType());
    CarSample sample;
    const auto recorded = [&](const std::function<void(LapRecorder&, int)>& disturb,
                              qsizetype* size) {
        LapRecorder recorder;
        for (int i = 0; i < 100; ++i) {
            source.change();
            source.fill(sample);
            disturb(recorder, i);
            recorder.add(sample, 5.0);
        }
        reader::LapCourse course = recorder.takeCourse();
        *size = recorder->size();
        return course;
    };
    qsizetype size = 0;
    EXPECT_TRUE(recorded([](LapRecorder&, int) {}, &size).isOf(size, 5.0));
    const std::function<void(LapRecorder&, int)> disturbances[] = {
        [](LapRecorder& recorder, int i) {
            if (i == 50) {
                EXPECT_EQ(recorder->size(), 50);
            }
        },
        [&](LapRecorder& recorder, int i) {
            if (i == 50) {
                recorder.add(sample, 6.0);
            }
        },
        [&](LapRecorder& recorder, int i) {
            if (i == 50) {
                recorder.add(sample);
            }
        },
        [&](LapRecorder&, int i) {
            if (i == 50) {
                sample.set("note", Value(1, QString()));
            }
        },
        [&](LapRecorder& recorder, int i) {
            if (i == 0) {
                recorder.add(sample);
            }
        },
    };
    for (const auto& disturb : disturbances) {
        EXPECT_FALSE(recorded(disturb, &size).isOf(size, 5.0)) << &disturb - disturbances;
    }
}

TEST(LapRecorder, HasNoCourseWithoutClockOrDistance) {
    SnapshotSource source({{"speed", irsdk_float, "m/s"}, {"sessiontime", irsdk_double, "s"}});
    CarSample sample;
    source.fill(sample);
    LapRecorder recorder;
    recorder.add(sample, 5.0);
    EXPECT_FALSE(recorder.takeCourse().isOf(1, 5.0));
}

}  // namespace readertest
