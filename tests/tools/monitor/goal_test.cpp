#include "tools/monitor/goal.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;
using rataip::monitor::ExitStatus;
using rataip::monitor::Goal;

// Only a failing test waits this long.
constexpr int kGenerousMs = 20'000;

/** Records how a goal ended. */
class EndSpy {
public:
    explicit EndSpy(const Goal& goal) {
        QObject::connect(&goal, &Goal::ended, &m_context, [this](ExitStatus status) {
            ++m_times;
            m_status = status;
        });
    }

    std::optional<ExitStatus> status() const { return m_status; }
    int times() const { return m_times; }

private:
    QObject m_context;
    std::optional<ExitStatus> m_status;
    int m_times = 0;
};

TEST(MonitorGoal, IsReachedWithTheLastLapAskedFor) {
    Goal goal(2, std::nullopt);
    const EndSpy spy(goal);
    goal.start();
    goal.onTick();
    goal.onLap();
    EXPECT_EQ(spy.status(), std::nullopt);
    goal.onLap();
    EXPECT_EQ(spy.status(), ExitStatus::Ok);
}

TEST(MonitorGoal, EndsOnlyOnce) {
    Goal goal(1, std::nullopt);
    const EndSpy spy(goal);
    goal.onTick();
    goal.onLap();
    goal.onLap();
    goal.onInterrupted();
    goal.onSourceGone();
    EXPECT_EQ(spy.times(), 1);
    EXPECT_EQ(spy.status(), ExitStatus::Ok);
}

TEST(MonitorGoal, DoesNotEndByLapsWhenNoneWereAskedFor) {
    Goal goal(std::nullopt, std::nullopt);
    const EndSpy spy(goal);
    goal.onLap();
    EXPECT_EQ(spy.times(), 0);
}

struct EndingCase {
    const char* name;
    std::optional<int> laps;
    std::optional<std::chrono::milliseconds> duration;
    bool hasData;
    ExitStatus expected;
};

std::string nameOf(const ::testing::TestParamInfo<EndingCase>& info) {
    return info.param.name;
}

class MonitorGoalEarlyEnd : public ::testing::TestWithParam<EndingCase> {};

TEST_P(MonitorGoalEarlyEnd, ReportsWhetherItWasReached) {
    for (void (Goal::*const end)() : {&Goal::onInterrupted, &Goal::onSourceGone}) {
        Goal goal(GetParam().laps, GetParam().duration);
        const EndSpy spy(goal);
        goal.start();
        if (GetParam().hasData) {
            goal.onTick();
        }
        (goal.*end)();
        EXPECT_EQ(spy.status(), GetParam().expected);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Asked, MonitorGoalEarlyEnd,
    ::testing::Values(
        EndingCase{"NothingWithData", std::nullopt, std::nullopt, true, ExitStatus::Ok},
        EndingCase{"NothingWithoutData", std::nullopt, std::nullopt, false, ExitStatus::NoData},
        EndingCase{"LapsWithData", 5, std::nullopt, true, ExitStatus::FellShort},
        EndingCase{"LapsWithoutData", 5, std::nullopt, false, ExitStatus::NoData},
        EndingCase{"TimeWithData", std::nullopt, 1h, true, ExitStatus::FellShort},
        EndingCase{"TimeWithoutData", std::nullopt, 1h, false, ExitStatus::NoData}),
    nameOf);

class MonitorGoalTime : public ::testing::TestWithParam<EndingCase> {};

TEST_P(MonitorGoalTime, ReportsWhetherItWasReached) {
    Goal goal(GetParam().laps, GetParam().duration);
    const EndSpy spy(goal);
    QSignalSpy ended(&goal, &Goal::ended);
    goal.start();
    if (GetParam().hasData) {
        goal.onTick();
    }
    ASSERT_TRUE(ended.wait(kGenerousMs));
    EXPECT_EQ(spy.status(), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Asked, MonitorGoalTime,
    ::testing::Values(EndingCase{"TimeWithData", std::nullopt, 10ms, true, ExitStatus::Ok},
                      EndingCase{"TimeWithoutData", std::nullopt, 10ms, false, ExitStatus::NoData},
                      EndingCase{"LapsInTimeWithData", 5, 10ms, true, ExitStatus::FellShort},
                      EndingCase{"LapsInTimeWithoutData", 5, 10ms, false, ExitStatus::NoData}),
    nameOf);

TEST(MonitorGoal, DoesNotWaitForTheTimeOnceTheLapsHaveArrived) {
    Goal goal(1, 10ms);
    const EndSpy spy(goal);
    QSignalSpy ended(&goal, &Goal::ended);
    goal.start();
    goal.onTick();
    goal.onLap();
    EXPECT_FALSE(ended.wait(200));
    EXPECT_EQ(spy.times(), 1);
}

}  // namespace
