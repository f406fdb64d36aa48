#include "reader/lapcourse.h"

#include "tests/reader/readerfixture.h"

#include <limits>

using namespace readertest;
using reader::LapCourse;

namespace {

/** A course at these distances, 1.5 s apart, on a track of `kilometres`. */
LapCourse courseOf(const QList<double>& fractions, double kilometres = 1.0) {
    LapCourse course(kilometres);
    for (qsizetype i = 0; i < fractions.size(); ++i) {
        course.add(1.5 * static_cast<double>(i), fractions[i]);
    }
    course.complete();
    return course;
}

/** Another car's lap, driven tick by tick; calls `atHalf` on the way. */
template <typename AtHalf>
LapPointer drivenLap(Drive& drive, AtHalf atHalf) {
    drive.publishSession();
    drive.putOther(kLaterCar, 0.5).tick().driveOtherToLine(kLaterCar);
    drive.setFinishedLaps(kLaterCar, 1, 90.0).tick();
    for (int i = 1; i < 60; ++i) {
        drive.putOther(kLaterCar, 0.01 + 0.016 * i).tick();
        if (i == 30) {
            atHalf();
        }
    }
    drive.putOther(kLaterCar, 0.005).tick();
    drive.setFinishedLaps(kLaterCar, 2, 90.0).tick();
    return drive.lastDrivenLap(kLaterCar);
}

QList<double> distancesOf(const LapPointer& lap, double kilometres) {
    QList<double> distances;
    for (const double fraction : samplesOf(lap, "lapdistpct")) {
        distances.append(fraction * kilometres * 1000.0);
    }
    return distances;
}

class RecordedCourse : public ReaderTest {
protected:
    /** Both cars are on a lap that neither results nor a lap number ends. */
    void beginLaps() {
        drive.setFinishedLaps(kOwnCar, -1, 0.0);
        drive.setFinishedLaps(kLaterCar, -1, 0.0);
        drive.publishSession();
        drive.putOtherOnPitRoad(kLaterCar, 0.02).leavePits();
    }

    void makeOwn(int slot) {
        drive.session.ownCar = QByteArray::number(slot);
        drive.publishSession();
    }

    /** Both cars side by side; the current own car has its own variables. */
    void driveBoth(double from, double to) {
        constexpr int kTicks = 24;
        for (int i = 0; i < kTicks; ++i) {
            const double distance = from + (to - from) * i / kTicks;
            drive.putOther(kLaterCar, distance);
            drive.putOwnOnTrack(distance, 90.0 * distance).tick();
        }
    }

    /** Both cars over the line: laps end by the own lap time and by the finished laps. */
    void crossLine() {
        drive.setFinishedLaps(kOwnCar, 0, 90.0);
        drive.setFinishedLaps(kLaterCar, 0, 90.0);
        drive.putOther(kLaterCar, 0.005);
        drive.crossOwnLine(90.0);
    }
};

}  // namespace

TEST(LapCourse, RepeatsTheLastStepAndTheLastSpeed) {
    const LapCourse course = courseOf({0.0, 0.25, 0.75}, 6.0);
    EXPECT_EQ(course.timeSteps(), QList<double>({1.5, 1.5, 1.5}));
    EXPECT_EQ(course.time(), QList<double>({0.0, 1.5, 3.0}));
    EXPECT_EQ(course.distance(), QList<double>({0.0, 1500.0, 4500.0}));
    EXPECT_EQ(course.speed(), QList<double>({1000.0, 2000.0, 2000.0}));
}

TEST(LapCourse, OfOneSampleStandsStill) {
    const LapCourse course = courseOf({0.5});
    EXPECT_EQ(course.timeSteps(), QList<double>({0.0}));
    EXPECT_EQ(course.time(), QList<double>({0.0}));
    EXPECT_EQ(course.distance(), QList<double>({500.0}));
    EXPECT_EQ(course.speed(), QList<double>({0.0}));
}

TEST(LapCourse, OfNoSampleIsEmpty) {
    const LapCourse course = courseOf({});
    EXPECT_TRUE(course.timeSteps().isEmpty());
    EXPECT_TRUE(course.time().isEmpty());
}

TEST(LapCourse, DoesNotDependOnItsExpectedLength) {
    for (int samples = 1; samples < 70; ++samples) {
        QList<double> fractions;
        for (int i = 0; i < samples; ++i) {
            fractions.append(i * i / 10000.0);
        }
        const LapCourse expected = courseOf(fractions);
        for (const qsizetype hint : {1, 15, 16, 17, 600}) {
            LapCourse course(1.0, hint);
            for (int i = 0; i < samples; ++i) {
                course.add(1.5 * i, fractions[i]);
            }
            ASSERT_TRUE(course.isOf(samples, 1.0));
            course.complete();
            ASSERT_EQ(course.distance(), expected.distance());
            ASSERT_EQ(course.speed(), expected.speed());
            ASSERT_EQ(course.time(), expected.time());
            ASSERT_EQ(course.timeSteps(), expected.timeSteps());
        }
    }
}

TEST(LapCourse, BelongsOnlyToItsSamplesAndItsTrack) {
    LapCourse course(1.0);
    course.add(0.0, 0.0);
    course.add(1.0, 0.1);
    EXPECT_TRUE(course.isOf(2, 1.0));
    EXPECT_FALSE(course.isOf(1, 1.0));
    EXPECT_FALSE(course.isOf(3, 1.0));
    EXPECT_FALSE(course.isOf(2, 1.1));
}

TEST(LapCourse, BelongsToNoTrackWhoseLengthIsNaN) {
    LapCourse course(std::numeric_limits<double>::quiet_NaN());
    course.add(0.0, 0.0);
    EXPECT_FALSE(course.isOf(1, std::numeric_limits<double>::quiet_NaN()));
}

TEST_F(RecordedCourse, BecomesTheChannelsOfTheLap) {
    const LapPointer lap = drivenLap(drive, [] {});
    ASSERT_GT(samplesOf(lap, "lapdistpct").size(), 50);
    EXPECT_EQ(samplesOf(lap, "lapdist"), distancesOf(lap, 1.0));
    EXPECT_EQ(samplesOf(lap, "speed").size(), samplesOf(lap, "lapdist").size());
}

TEST_F(RecordedCourse, FollowsAChangeOfAChannelOnTheWay) {
    const LapPointer lap = drivenLap(drive, [this] {
        drive.reader.lap(kLaterCar)->channel("lapdistpct")->setSample(10, 0.123);
    });
    EXPECT_EQ(samplesOf(lap, "lapdistpct").value(10), 0.123);
    EXPECT_EQ(samplesOf(lap, "lapdist"), distancesOf(lap, 1.0));
}

TEST_F(RecordedCourse, FollowsASampleThatIsAddedOnTheWay) {
    const LapPointer lap = drivenLap(drive, [this] {
        TLM::SDK::Sample sample;
        sample.setValue("lapdistpct", QVariant(0.5), QString());
        drive.reader.lap(kLaterCar)->addSample(sample);
    });
    EXPECT_EQ(samplesOf(lap, "lapdist"), distancesOf(lap, 1.0));
}

TEST_F(RecordedCourse, FollowsATrackWhoseLengthChangesOnTheWay) {
    const LapPointer lap = drivenLap(drive, [this] {
        drive.session.trackLength = "2.0 km";
        drive.publishSession();
    });
    EXPECT_EQ(samplesOf(lap, "lapdist"), distancesOf(lap, 2.0));
}

TEST_F(RecordedCourse, FollowsATrackWhoseLengthChangesWithoutAText) {
    const LapPointer lap =
        drivenLap(drive, [this] { drive.reader.pathSet("WeekendInfo/TrackLength", "3.0 km"); });
    EXPECT_EQ(samplesOf(lap, "lapdist"), distancesOf(lap, 3.0));
}

TEST_F(RecordedCourse, FollowsAChangeOfTheOwnCarInMidLap) {
    beginLaps();
    driveBoth(0.1, 0.4);
    makeOwn(kLaterCar);
    driveBoth(0.4, 0.9);
    crossLine();
    const LapPointer former = drive.lastDrivenLap(kOwnCar);
    EXPECT_GT(former->size(), 40);
    EXPECT_EQ(samplesOf(former, "lapdist"), distancesOf(former, 1.0));
    const LapPointer own = drive.lastDrivenLap(kLaterCar);
    EXPECT_GT(own->size(), 40);
    EXPECT_FALSE(own->containsRecordedChannel("lapdist")) << "its own variables are better";
}

TEST_F(RecordedCourse, FollowsACarThatWasTheOwnCarForAPartOfItsLap) {
    beginLaps();
    driveBoth(0.1, 0.4);
    makeOwn(kLaterCar);
    driveBoth(0.4, 0.6);
    makeOwn(kOwnCar);
    driveBoth(0.6, 0.9);
    crossLine();
    const LapPointer other = drive.lastDrivenLap(kLaterCar);
    EXPECT_GT(other->size(), 60);
    EXPECT_EQ(samplesOf(other, "lapdist"), distancesOf(other, 1.0));
    EXPECT_FALSE(drive.lastDrivenLap(kOwnCar)->containsRecordedChannel("lapdist"));
}
