#include "tests/torture/lapledger.h"

#include <gtest/gtest.h>

using testsupport::DrivenLap;
using torture::HandedLap;
using torture::LapBalance;
using torture::LapLedger;
using Trust = LapLedger::Trust;

// The books by which the torture program says that nothing was lost.

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

LapLedger ledgerThatSaw(long long from, long long to) {
    LapLedger ledger;
    ledger.see(from, false);
    ledger.see(to, true);
    return ledger;
}

}  // namespace

TEST(LapLedger, IsEvenWhenALapThatWasSeenWasHandedOver) {
    LapLedger ledger = ledgerThatSaw(kStart, kFinish + 200);
    ledger.hand(handed());
    const LapBalance balance = ledger.balance({lap()}, Trust::AllCars);
    EXPECT_TRUE(balance.isEven());
    EXPECT_EQ(balance.driven, 1);
    EXPECT_EQ(balance.handedOver, 1);
}

TEST(LapLedger, MissesALapThatWasSeenAndNotHandedOver) {
    const LapLedger ledger = ledgerThatSaw(kStart, kFinish + 200);
    EXPECT_EQ(ledger.balance({lap()}, Trust::AllCars).lost, 1);
    EXPECT_EQ(ledger.balance({lap(false)}, Trust::AllCars).lost, 1)
        << "one that ended at the pits counts too";
}

TEST(LapLedger, DoesNotMissALapWhoseEndOrResultNobodySaw) {
    EXPECT_EQ(ledgerThatSaw(kStart, kFinish + 50).balance({lap()}, Trust::AllCars).cutShort, 1);
    EXPECT_EQ(ledgerThatSaw(kFinish + 1, kFinish + 300).balance({lap()}, Trust::AllCars).cutShort,
              1);
    LapLedger interrupted = ledgerThatSaw(kStart, kFinish - 1);
    interrupted.see(kFinish + 1, false);
    interrupted.see(kFinish + 300, true);
    EXPECT_EQ(interrupted.balance({lap()}, Trust::AllCars).lost, 0);
    EXPECT_EQ(interrupted.balance({lap()}, Trust::AllCars).cutShort, 1);
}

TEST(LapLedger, DoesNotMissALapThatTheCarsVanishingEnded) {
    DrivenLap vanished = lap(false);
    vanished.kind = "flying";
    const LapLedger ledger = ledgerThatSaw(kStart, kFinish + 200);
    EXPECT_EQ(ledger.balance({vanished}, Trust::AllCars).driven, 0);
    DrivenLap next = vanished;
    next.start = kFinish;
    next.finish = kFinish + 60;
    EXPECT_EQ(ledger.balance({lap(), next}, Trust::AllCars).lost, 0);
}

TEST(LapLedger, FindsALapThatWasHandedOverTwice) {
    LapLedger ledger = ledgerThatSaw(kStart, kFinish + 200);
    ledger.hand(handed());
    ledger.hand(handed());
    EXPECT_EQ(ledger.balance({lap()}, Trust::AllCars).twice, 1);
}

TEST(LapLedger, FindsALapWithTheWrongEnd) {
    LapLedger ledger = ledgerThatSaw(kStart, kFinish + 200);
    ledger.hand(handed(false));
    EXPECT_EQ(ledger.balance({lap()}, Trust::AllCars).wrongEnd, 1);
    EXPECT_EQ(ledger.balance({lap(false)}, Trust::AllCars).wrongEnd, 0);
}

TEST(LapLedger, FindsALapOfTwoRuns) {
    LapLedger ledger = ledgerThatSaw(kStart, kFinish + 200);
    HandedLap mixed = handed();
    mixed.isOwnCar = true;
    mixed.foreignSamples = 500;
    ledger.hand(mixed);
    EXPECT_EQ(ledger.balance({lap()}, Trust::AllCars).mixed, 1);
    EXPECT_EQ(ledger.balance({lap()}, Trust::AllCars).carriedOver, 0);
}

TEST(LapLedger, DoesNotTakeALapOfAnEarlierRunForOneOfThisRun) {
    LapLedger ledger;
    ledger.see(kStart, false);
    ledger.hand(handed());
    ledger.see(kFinish + testsupport::kResultTicks, true);
    const LapBalance balance = ledger.balance({lap()}, Trust::AllCars);
    EXPECT_EQ(balance.lost, 1);
    EXPECT_EQ(balance.handedOver, 0);
    EXPECT_EQ(balance.carriedOver, 1);
}

TEST(LapLedger, LetsOtherCarsKeepALapOpenBehindResultsOfAnEarlierRun) {
    LapLedger ledger = ledgerThatSaw(kStart, kFinish + 200);
    HandedLap carried = handed();
    carried.isOwnCar = false;
    carried.foreignSamples = 500;
    ledger.hand(carried);
    EXPECT_EQ(ledger.balance({lap()}, Trust::OwnCar).mixed, 0);
    EXPECT_EQ(ledger.balance({lap()}, Trust::OwnCar).carriedOver, 1);
}

TEST(LapLedger, KnowsALapThatBeginsWithWhatWasRecordedBehindTheLineBeforeAFault) {
    LapLedger ledger = ledgerThatSaw(kStart, kFinish + 200);
    HandedLap carried = handed();
    carried.foreignSamples = 100;
    ledger.hand(carried);
    EXPECT_EQ(ledger.balance({lap()}, Trust::AllCars).mixed, 0);
    EXPECT_EQ(ledger.balance({lap()}, Trust::AllCars).carriedOver, 1);
}

TEST(LapLedger, AllowsTheOwnCarForeignSamplesForAsLongAsAResultTakes) {
    LapLedger ledger = ledgerThatSaw(kStart, kFinish + 200);
    HandedLap carried = handed();
    carried.isOwnCar = true;
    carried.foreignSamples = testsupport::kResultTicks;
    ledger.hand(carried);
    EXPECT_EQ(ledger.balance({lap()}, Trust::OwnCar).mixed, 0);
    ++carried.foreignSamples;
    ledger.hand(carried);
    EXPECT_EQ(ledger.balance({lap()}, Trust::OwnCar).mixed, 1);
}

TEST(LapLedger, FindsACompletedLapThatNobodyDrove) {
    LapLedger ledger = ledgerThatSaw(kStart, kFinish + 200);
    HandedLap invented = handed();
    invented.lastTick = kFinish - 400;
    ledger.hand(invented);
    invented.completed = false;
    ledger.hand(invented);
    EXPECT_EQ(ledger.balance({}, Trust::AllCars).neverDriven, 1)
        << "only the completed one is a claim";
}

TEST(LapLedger, AsksOfOtherCarsBehindAnEarlierRunThatNoSampleIsMissing) {
    LapLedger ledger = ledgerThatSaw(kStart, kFinish + 200);
    ledger.hand(piece(kStart, kStart + 300));
    EXPECT_EQ(ledger.balance({lap()}, Trust::OwnCar).cutShort, 1) << "the rest is open";
    LapLedger whole = ledger;
    whole.hand(piece(kStart + 302, kFinish + 90));
    EXPECT_EQ(whole.balance({lap()}, Trust::OwnCar).inPieces, 1);
    EXPECT_EQ(whole.balance({lap()}, Trust::OwnCar).neverDriven, 0);
    ledger.hand(piece(kStart + 400, kFinish + 90));
    EXPECT_EQ(ledger.balance({lap()}, Trust::OwnCar).lost, 1);
}

TEST(LapLedger, AsksForNoPieceThatWasDrivenWhileTheHostDidNotLook) {
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

TEST(LapLedger, SaysWhatIsNotEven) {
    LapLedger ledger = ledgerThatSaw(kStart, kFinish + 200);
    ledger.hand(piece(kStart, kStart + 300));
    const LapBalance balance = ledger.balance({lap()}, Trust::AllCars);
    ASSERT_EQ(balance.complaints.size(), 2U);
    EXPECT_EQ(balance.complaints.front(),
              "lost: flying lap 0 of car 4, ticks 1000 to 2000; seen: 1000 to 2200; handed over: "
              "[completed lap of car 4, ticks 1000 to 1300, foreign 0]");
    EXPECT_EQ(balance.complaints.back().substr(0, 13), "never driven:");
}

TEST(LapLedger, AsksOfTheOwnCarThatItsLapsEndWhereTheyWereDriven) {
    LapLedger ledger = ledgerThatSaw(kStart, kFinish + 200);
    HandedLap part = handed();
    part.isOwnCar = true;
    part.lastTick = kStart + 300;
    ledger.hand(part);
    EXPECT_EQ(ledger.balance({lap()}, Trust::OwnCar).lost, 1);
    EXPECT_EQ(ledger.balance({lap()}, Trust::OwnCar).neverDriven, 1);
}

TEST(LapLedger, AddsUpTheRuns) {
    const LapLedger ledger = ledgerThatSaw(kStart, kFinish + 200);
    LapBalance sum = ledger.balance({lap()}, Trust::AllCars);
    sum += ledger.balance({lap(), lap(false)}, Trust::AllCars);
    EXPECT_EQ(sum.lost, 3);
    EXPECT_FALSE(sum.isEven());
}
