#include "tests/torture/lapledger.h"

#include <gtest/gtest.h>

using testsupport::DrivenLap;
using torture::HandedLap;
using torture::LapBalance;
using torture::LapLedger;
using Trust = LapLedger::Trust;

namespace {

constexpr long long kStart = 1000;
constexpr long long kFinish = 2000;

DrivenLap lap(bool complete = true) {
    DrivenLap driven;
    driven.car = 4;
    driven.kind = complete ? "flying" : "in";
    driven.start = kStart;
    driven.finish = kFinish;
    driven.complete = complete;
    return driven;
}

HandedLap handed(bool completed = true) {
    return {.car = 4, .firstTick = kStart, .lastTick = kFinish - 1, .completed = completed};
}

HandedLap piece(long long firstTick, long long lastTick) {
    HandedLap lap = handed();
    lap.firstTick = firstTick;
    lap.lastTick = lastTick;
    return lap;
}

/** A lap that begins with samples of an earlier run. */
HandedLap carried(bool isOwnCar, int foreignSamples) {
    HandedLap lap = handed();
    lap.isOwnCar = isOwnCar;
    lap.foreignSamples = foreignSamples;
    return lap;
}

LapLedger ledgerThatSaw(long long from, long long to) {
    LapLedger ledger;
    ledger.see(from, false);
    ledger.see(to, true);
    return ledger;
}

/** For a host that saw everything and got these laps. */
LapBalance balanceOf(const std::vector<HandedLap>& laps, Trust trust = Trust::AllCars,
                     const std::vector<DrivenLap>& driven = {lap()}) {
    LapLedger ledger = ledgerThatSaw(kStart, kFinish + 200);
    for (const HandedLap& each : laps) {
        ledger.hand(each);
    }
    return ledger.balance(driven, trust);
}

}  // namespace

TEST(LapLedger, IsFlawlessWhenALapThatWasSeenWasHandedOver) {
    const LapBalance balance = balanceOf({handed()});
    EXPECT_TRUE(balance.isFlawless());
    EXPECT_EQ(balance.driven, 1);
    EXPECT_EQ(balance.handedOver, 1);
}

TEST(LapLedger, MissesALapThatWasSeenAndNotHandedOver) {
    EXPECT_EQ(balanceOf({}).lost, 1);
    EXPECT_EQ(balanceOf({}, Trust::AllCars, {lap(false)}).lost, 1)
        << "one that ended at the pits counts too";
}

TEST(LapLedger, DoesNotMissALapWhoseEndOrResultWasNotSeen) {
    EXPECT_EQ(ledgerThatSaw(kStart, kFinish + 50).balance({lap()}, Trust::AllCars).cutShort, 1);
    EXPECT_EQ(ledgerThatSaw(kFinish + 1, kFinish + 300).balance({lap()}, Trust::AllCars).cutShort,
              1);
    LapLedger interrupted = ledgerThatSaw(kStart, kFinish - 1);
    interrupted.see(kFinish + 1, false);
    interrupted.see(kFinish + 300, true);
    EXPECT_EQ(interrupted.balance({lap()}, Trust::AllCars).lost, 0);
    EXPECT_EQ(interrupted.balance({lap()}, Trust::AllCars).cutShort, 1);
}

TEST(LapLedger, DoesNotMissALapThatEndedBecauseTheCarVanished) {
    DrivenLap vanished = lap(false);
    vanished.kind = "flying";
    EXPECT_EQ(balanceOf({}, Trust::AllCars, {vanished}).driven, 0);
    DrivenLap next = vanished;
    next.start = kFinish;
    next.finish = kFinish + 60;
    EXPECT_EQ(balanceOf({}, Trust::AllCars, {lap(), next}).lost, 0);
}

TEST(LapLedger, FindsALapThatWasHandedOverTwice) {
    EXPECT_EQ(balanceOf({handed(), handed()}).twice, 1);
}

TEST(LapLedger, FindsALapWithTheWrongEnd) {
    EXPECT_EQ(balanceOf({handed(false)}).wrongEnd, 1);
    EXPECT_EQ(balanceOf({handed(false)}, Trust::AllCars, {lap(false)}).wrongEnd, 0);
}

TEST(LapLedger, FindsALapOfTwoRuns) {
    const LapBalance balance = balanceOf({carried(true, 500)});
    EXPECT_EQ(balance.mixed, 1);
    EXPECT_EQ(balance.carriedOver, 0);
}

TEST(LapLedger, DoesNotMistakeALapOfAnEarlierRunForOneOfThisRun) {
    LapLedger ledger;
    ledger.see(kStart, false);
    ledger.hand(handed());
    ledger.see(kFinish + testsupport::kResultTicks, true);
    const LapBalance balance = ledger.balance({lap()}, Trust::AllCars);
    EXPECT_EQ(balance.lost, 1);
    EXPECT_EQ(balance.handedOver, 0);
    EXPECT_EQ(balance.carriedOver, 1);
}

TEST(LapLedger, LetsOtherCarsKeepALapOpenAfterResultsOfAnEarlierRun) {
    const LapBalance balance = balanceOf({carried(false, 500)}, Trust::OwnCar);
    EXPECT_EQ(balance.mixed, 0);
    EXPECT_EQ(balance.carriedOver, 1);
}

TEST(LapLedger, AcceptsALapThatBeginsWithSamplesRecordedAfterTheLineBeforeAFault) {
    const LapBalance balance = balanceOf({carried(false, 100)});
    EXPECT_EQ(balance.mixed, 0);
    EXPECT_EQ(balance.carriedOver, 1);
}

TEST(LapLedger, AllowsTheOwnCarForeignSamplesForAsLongAsAResultTakes) {
    constexpr int kLongest = testsupport::kResultTicks;
    EXPECT_EQ(balanceOf({carried(true, kLongest)}, Trust::OwnCar).mixed, 0);
    EXPECT_EQ(balanceOf({carried(true, kLongest + 1)}, Trust::OwnCar).mixed, 1);
}

TEST(LapLedger, FindsACompletedLapThatWasNotDriven) {
    const HandedLap invented = piece(kStart, kFinish - 400);
    HandedLap unfinished = invented;
    unfinished.completed = false;
    EXPECT_EQ(balanceOf({invented, unfinished}, Trust::AllCars, {}).neverDriven, 1)
        << "only the completed one is a claim";
}

TEST(LapLedger, RequiresEverySampleOfOtherCarsAfterAnEarlierRun) {
    const HandedLap first = piece(kStart, kStart + 300);
    EXPECT_EQ(balanceOf({first}, Trust::OwnCar).cutShort, 1) << "the rest is open";
    const LapBalance whole = balanceOf({first, piece(kStart + 302, kFinish + 90)}, Trust::OwnCar);
    EXPECT_EQ(whole.inPieces, 1);
    EXPECT_EQ(whole.neverDriven, 0);
    EXPECT_EQ(balanceOf({first, piece(kStart + 400, kFinish + 90)}, Trust::OwnCar).lost, 1);
}

TEST(LapLedger, RequiresNoPieceThatWasDrivenWhileTheHostDidNotLook) {
    LapLedger ledger = ledgerThatSaw(kStart - 100, kStart + 300);
    ledger.see(kStart + 600, false);
    ledger.see(kFinish + 200, true);
    ledger.hand(piece(kStart + 602, kFinish + 90));
    EXPECT_EQ(ledger.balance({lap()}, Trust::OwnCar).inPieces, 1);
    ledger = ledgerThatSaw(kStart + 500, kFinish + 200);
    ledger.hand(piece(kStart + 602, kFinish + 90));
    EXPECT_EQ(ledger.balance({lap()}, Trust::OwnCar).lost, 1) << "100 ticks were seen";
}

TEST(LapLedger, DoesNotMissAPieceThatWasOpenWhenTheHostStoppedLooking) {
    LapLedger ledger = ledgerThatSaw(kStart - 100, kFinish + 700);
    ledger.see(kFinish + 750, false);
    ledger.see(kFinish + 1500, true);
    ledger.hand(piece(kFinish + 741, kFinish + 1400));
    EXPECT_EQ(ledger.balance({lap()}, Trust::OwnCar).cutShort, 1);
    EXPECT_EQ(ledger.balance({lap()}, Trust::OwnCar).lost, 0);
}

TEST(LapLedger, SaysWhatIsMissingOrWrong) {
    const LapBalance balance = balanceOf({piece(kStart, kStart + 300)});
    ASSERT_EQ(balance.complaints.size(), 2U);
    EXPECT_EQ(balance.complaints.front(),
              "lost: flying lap 0 of car 4, ticks 1000 to 2000; seen: 1000 to 2200; handed over: "
              "[completed lap of car 4, ticks 1000 to 1300, foreign 0]");
    EXPECT_EQ(balance.complaints.back().substr(0, 13), "never driven:");
}

TEST(LapLedger, RequiresThatTheOwnCarsLapsEndWhereTheyWereDriven) {
    HandedLap part = piece(kStart, kStart + 300);
    part.isOwnCar = true;
    const LapBalance balance = balanceOf({part}, Trust::OwnCar);
    EXPECT_EQ(balance.lost, 1);
    EXPECT_EQ(balance.neverDriven, 1);
}

TEST(LapLedger, AddsUpTheRuns) {
    LapBalance sum = balanceOf({});
    sum += balanceOf({}, Trust::AllCars, {lap(), lap(false)});
    EXPECT_EQ(sum.lost, 3);
    EXPECT_FALSE(sum.isFlawless());
}
