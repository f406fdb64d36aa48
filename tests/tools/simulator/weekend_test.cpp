#include "tools/simulator/weekend.h"

#include <gtest/gtest.h>

using namespace simulator;

namespace {

constexpr double kLapMeters = 1000.0;
constexpr double kLapSeconds = 20.0;

Weekend weekendOf(std::vector<SessionPlan> plans) {
    return Weekend(std::move(plans), kLapMeters, kLapSeconds, Random(1));
}

/** Runs a weekend tick by tick until an event. */
class Course {
public:
    explicit Course(std::vector<SessionPlan> plans) : weekend(weekendOf(std::move(plans))) {}

    WeekendEvent next(double patienceSeconds = 2000.0) {
        for (const Tick end = tick + ticksOf(patienceSeconds); tick < end;) {
            const WeekendEvent event = weekend.advance(++tick, progress);
            if (event != WeekendEvent::None) {
                return event;
            }
        }
        return WeekendEvent::None;
    }

    Weekend weekend;
    SessionProgress progress;
    Tick tick = 0;
};

const SessionPlan kPractice = {SessionType::Practice, 100.0, std::nullopt};
const SessionPlan kEndlessTest = {SessionType::Testing, std::nullopt, std::nullopt};
const SessionPlan kRace = {SessionType::Race, std::nullopt, 3};

}  // namespace

TEST(Weekend, NeverEndsASessionWithoutLimit) {
    Course course({kEndlessTest});
    EXPECT_EQ(course.next(20000.0), WeekendEvent::None);
    EXPECT_EQ(course.weekend.state(), SessionState::Racing);
    EXPECT_EQ(course.weekend.remainingSeconds(course.tick), Weekend::kNoTimeLimit);
    EXPECT_EQ(course.weekend.remainingLaps(3), Weekend::kNoLapLimit);
    EXPECT_TRUE(course.weekend.pitsOpen());
}

TEST(Weekend, EndsATimedSessionWithTheFlagAndTheCoolDown) {
    Course course({kPractice, kRace});
    EXPECT_NEAR(course.weekend.remainingSeconds(ticksOf(40.0)), 60.0, 1e-9);
    EXPECT_EQ(course.next(), WeekendEvent::StateChanged);
    EXPECT_EQ(course.weekend.state(), SessionState::Checkered);
    EXPECT_EQ(course.tick, ticksOf(100.0));
    EXPECT_FALSE(course.weekend.pitsOpen());
    EXPECT_EQ(course.next(), WeekendEvent::StateChanged);
    EXPECT_EQ(course.weekend.state(), SessionState::CoolDown);
    EXPECT_EQ(course.weekend.remainingSeconds(course.tick), 0.0);
}

TEST(Weekend, CoolsDownAtOnceWhenEverybodyIsIn) {
    Course course({kPractice});
    course.next();
    course.progress.allIn = true;
    const Tick flag = course.tick;
    course.next();
    EXPECT_EQ(course.tick, flag + 1);
}

TEST(Weekend, GoesOnToTheNextSessionUnderTheSameIdentity) {
    Course course({kPractice, kRace});
    const auto session = course.weekend.sessionId();
    const auto subSession = course.weekend.subSessionId();
    course.next();
    course.next();
    EXPECT_EQ(course.next(), WeekendEvent::SessionChanged);
    EXPECT_EQ(course.weekend.number(), 1);
    EXPECT_EQ(course.weekend.uniqueId(), 2);
    EXPECT_FALSE(course.weekend.carsLoaded());
    EXPECT_EQ(course.weekend.sessionSeconds(course.tick), 0.0);
    EXPECT_EQ(course.weekend.sessionId(), session);
    EXPECT_EQ(course.weekend.subSessionId(), subSession);
    EXPECT_EQ(course.next(), WeekendEvent::CarsLoaded);
    EXPECT_TRUE(course.weekend.carsLoaded());
    EXPECT_EQ(course.weekend.state(), SessionState::GetInCar);
}

TEST(Weekend, TakesARaceThroughTheGridTheFormationAndTheLaps) {
    Course course({kRace});
    EXPECT_EQ(course.weekend.state(), SessionState::GetInCar);
    course.next();
    EXPECT_EQ(course.weekend.state(), SessionState::Warmup);
    course.next();
    EXPECT_EQ(course.weekend.state(), SessionState::ParadeLaps);
    EXPECT_EQ(course.next(), WeekendEvent::None) << "waits for the first car";
    course.progress.leaderMeters = 0.99 * kLapMeters;
    course.next();
    EXPECT_EQ(course.weekend.state(), SessionState::Racing);
    course.progress.leaderLaps = 2;
    EXPECT_EQ(course.weekend.remainingLaps(2), 1);
    EXPECT_EQ(course.next(), WeekendEvent::None);
    course.progress.leaderLaps = 3;
    course.next();
    EXPECT_EQ(course.weekend.state(), SessionState::Checkered);
}

TEST(Weekend, BeginsANewOneUnderANewIdentityAfterTheLastSession) {
    Course course({kPractice});
    const auto session = course.weekend.sessionId();
    course.next();
    course.next();
    EXPECT_EQ(course.next(), WeekendEvent::WeekendChanged);
    EXPECT_EQ(course.weekend.number(), 0);
    EXPECT_NE(course.weekend.sessionId(), session);
    EXPECT_EQ(course.next(), WeekendEvent::CarsLoaded);
    EXPECT_EQ(course.weekend.state(), SessionState::Racing);
}
