#include "tests/reader/readerfixture.h"

#include <vector>

using namespace readertest;
using TLM::SDK::CarStatus;
using TLM::SDK::Lap;

namespace {

constexpr int kSlots = 64;

QByteArray weekend(const QByteArray& simMode) {
    return yaml({"WeekendInfo:", " TrackName: ring", " SimMode: " + simMode});
}

QByteArray drivers(const QByteArray& own) {
    return yaml(
        {"DriverInfo:", " DriverCarIdx: " + own, " Drivers:", " - CarIdx: 7", "   UserName: A"});
}

class SessionYaml : public ReaderTest {
protected:
    iRTelemetryReader& reader = drive.reader;

    void parse(const QByteArray& text) { reader.setYaml(text.constData()); }

    /** Only a replay drops the running lap time. */
    bool isReplay() {
        const LapPointer lap = reader.lap(kLaterCar);
        record(lap, "lapcurrentlaptime", {1.0});
        reader.cleanupLap(kLaterCar);
        return !lap->containsRecordedChannel("lapcurrentlaptime");
    }

    /** Only a live session ignores the own car's element of a per-car array. */
    bool isLive() {
        reader.updateCarList();
        testsupport::TestBlock block;
        block.addVariable("CarIdxMark", irsdk_int, kSlots);
        block.setAll("CarIdxMark", 1);
        reader.sample(reader.myCarIdx()).clear();
        reader.getRawData(&block.header(), block.varHeaders(), block.snapshot(),
                          block.snapshotLength());
        return !reader.sample(reader.myCarIdx()).containsValue("mark");
    }
};

}  // namespace

TEST_F(SessionYaml, IsNeitherLiveNorAReplayAtFirst) {
    parse(drivers("3"));
    EXPECT_FALSE(isReplay());
    EXPECT_FALSE(isLive());
}

TEST_F(SessionYaml, RecognizesALiveSession) {
    parse(drivers("3"));
    parse(weekend("full"));
    EXPECT_TRUE(isLive());
    EXPECT_FALSE(isReplay());
}

TEST_F(SessionYaml, RecognizesAReplay) {
    parse(drivers("3"));
    parse(weekend("replay"));
    EXPECT_TRUE(isReplay());
    EXPECT_FALSE(isLive());
}

TEST_F(SessionYaml, RecognizesAReplayOnlyByTheExactWord) {
    for (const QByteArray& mode :
         {QByteArray("Replay"), QByteArray("replay "), QByteArray("replays"), QByteArray("")}) {
        reader.initialize();
        parse(drivers("3"));
        parse(weekend(mode));
        EXPECT_FALSE(isReplay()) << mode.toStdString();
    }
    EXPECT_TRUE(isLive());
}

TEST_F(SessionYaml, TreatsAWeekendWithoutAModeAsLive) {
    parse(drivers("3"));
    parse(yaml({"WeekendInfo:", " TrackName: ring"}));
    EXPECT_TRUE(isLive());
}

TEST_F(SessionYaml, DecidesWithTheFirstTextThatHasAWeekend) {
    parse(yaml({"DriverInfo:", " DriverCarIdx: 3"}));
    EXPECT_FALSE(isReplay());
    EXPECT_FALSE(isLive());
    parse(weekend("Replay"));
    EXPECT_FALSE(isReplay());
    EXPECT_TRUE(isLive());
}

TEST_F(SessionYaml, StaysAReplayUntilInitialize) {
    parse(weekend("replay"));
    parse(weekend("full"));
    EXPECT_TRUE(isReplay());
    reader.initialize();
    EXPECT_FALSE(isReplay());
    parse(drivers("3"));
    EXPECT_FALSE(isReplay());
    EXPECT_TRUE(isLive()) << "the tree still has the earlier text";
}

TEST_F(SessionYaml, StaysLiveOnceDecided) {
    parse(drivers("3"));
    parse(weekend("full"));
    parse(weekend("replay"));
    EXPECT_TRUE(isLive());
    EXPECT_FALSE(isReplay());
}

TEST_F(SessionYaml, ReadsANullTextAsAnEmptyOne) {
    reader.setYaml(nullptr);
    EXPECT_TRUE(reader.subTreesKeys().isEmpty());
    EXPECT_FALSE(reader.updateCarList());
}

TEST_F(SessionYaml, ConvertsTheIdentityToAnId) {
    EXPECT_EQ(reader.sessionId("12345678"), QUuid("00000000-0000-0000-0000-000012345678"));
    EXPECT_EQ(reader.sessionId("1"), QUuid("00000000-0000-0000-0000-000000000001"));
    EXPECT_EQ(reader.sessionId("0123456789abcdefABCDEF0123456789"),
              QUuid("01234567-89ab-cdef-ABCD-EF0123456789"));
    EXPECT_EQ(reader.sessionId("123456789012345678901234567890"),
              QUuid("00123456-7890-1234-5678-901234567890"));
}

TEST_F(SessionYaml, ConvertsAnEmptyIdentityToTheNullId) {
    EXPECT_TRUE(reader.sessionId(QString()).isNull());
    EXPECT_TRUE(reader.sessionId("0").isNull());
}

TEST_F(SessionYaml, ConvertsAnInvalidIdentityToTheNullId) {
    EXPECT_TRUE(reader.sessionId("xyz").isNull());
    EXPECT_TRUE(reader.sessionId("12 34").isNull());
    EXPECT_TRUE(reader.sessionId("-1").isNull());
    EXPECT_TRUE(reader.sessionId(QString(33, '1')).isNull()) << "one digit too many";
    EXPECT_TRUE(reader.sessionId(QString(64, '1')).isNull());
    EXPECT_TRUE(reader.sessionId(QString(100000, '1')).isNull());
    EXPECT_FALSE(reader.sessionId(QString(32, '1')).isNull());
}

TEST_F(SessionYaml, DoesNotExpandPlaceholdersInAnIdentity) {
    EXPECT_TRUE(reader.sessionId("%1").isNull());
    EXPECT_TRUE(reader.sessionId("1%2").isNull());
}

TEST_F(SessionYaml, ReadsTheOwnCarsIndex) {
    parse(drivers("7"));
    reader.updateCarList();
    EXPECT_EQ(reader.myCarIdx(), 7);
    for (int slot = 0; slot < kSlots; ++slot) {
        EXPECT_EQ(reader.detailedTelemetry(slot), slot == 7);
        EXPECT_EQ(reader.sample(slot).detailedTelemetry(), slot == 7);
    }
}

TEST_F(SessionYaml, HasNoOwnCarWhenTheIndexIsNotANumber) {
    for (const QByteArray& text :
         {QByteArray("none"), QByteArray(""), QByteArray("7x"), QByteArray("1.5"),
          QByteArray("2147483648"), QByteArray("99999999999999999999"), QByteArray("0x7")}) {
        parse(drivers("7"));
        reader.updateCarList();
        ASSERT_EQ(reader.myCarIdx(), 7);
        parse(drivers(text));
        reader.updateCarList();
        EXPECT_EQ(reader.myCarIdx(), -1) << text.toStdString();
        for (int slot = 0; slot < kSlots; ++slot) {
            EXPECT_FALSE(reader.detailedTelemetry(slot));
            EXPECT_FALSE(reader.sample(slot).detailedTelemetry());
        }
    }
}

TEST_F(SessionYaml, ReportsAnOwnCarBeyondTheSlotsAsWritten) {
    parse(drivers("70"));
    reader.updateCarList();
    EXPECT_EQ(reader.myCarIdx(), 70);
    parse(drivers("2147483647"));
    reader.updateCarList();
    EXPECT_EQ(reader.myCarIdx(), 2147483647);
    parse(drivers("-5"));
    reader.updateCarList();
    EXPECT_EQ(reader.myCarIdx(), -5);
}

TEST_F(SessionYaml, LosesTheOwnCarWithItsSection) {
    parse(drivers("7"));
    reader.updateCarList();
    ASSERT_EQ(reader.myCarIdx(), 7);
    reader.clear();
    EXPECT_FALSE(reader.updateCarList());
    EXPECT_EQ(reader.myCarIdx(), -1);
    EXPECT_EQ(reader.driverName(7), "A") << "names stay until there is a list";
    EXPECT_TRUE(reader.detailedTelemetry(7)) << "without a list no slot is changed";
}

TEST_F(SessionYaml, ReadsFourNamesOfEachDriver) {
    parse(yaml({"DriverInfo:", " DriverCarIdx: 0", " Drivers:", " - CarIdx: 0",
                "   UserName: Ann Ace", "   TeamName: Aces", "   CarScreenName: Roadster",
                "   CarClassShortName: GT", " - CarIdx: 63", "   UserName: Zed",
                "   TeamName: Zeds", "   CarScreenName: Truck", "   CarClassShortName: Truck"}));
    EXPECT_TRUE(reader.updateCarList());
    EXPECT_EQ(reader.driverName(0), "Ann Ace");
    EXPECT_EQ(reader.teamName(0), "Aces");
    EXPECT_EQ(reader.carName(0), "Roadster");
    EXPECT_EQ(reader.className(0), "GT");
    EXPECT_EQ(reader.driverName(63), "Zed");
    EXPECT_EQ(reader.className(63), "Truck");
}

TEST_F(SessionYaml, NumbersEverySlotWithOrWithoutADriver) {
    parse(drivers("3"));
    reader.updateCarList();
    for (int slot = 0; slot < kSlots; ++slot) {
        EXPECT_EQ(reader.sample(slot).carId(), QString::number(slot));
        EXPECT_EQ(reader.sample(slot).detailedTelemetry(), slot == 3);
    }
}

TEST_F(SessionYaml, DoesNotNumberSlotsWithoutAListOfDrivers) {
    parse(yaml({"DriverInfo:", " DriverCarIdx: 3"}));
    EXPECT_FALSE(reader.updateCarList());
    EXPECT_EQ(reader.myCarIdx(), 3);
    EXPECT_TRUE(reader.sample(3).carId().isEmpty());
    EXPECT_FALSE(reader.detailedTelemetry(3));
}

TEST_F(SessionYaml, ReportsEachOfTheFourNamesThatChanges) {
    const std::vector<QByteArray> lines = {"   UserName: A", "   TeamName: A",
                                           "   CarScreenName: A", "   CarClassShortName: A"};
    const auto textOf = [](const std::vector<QByteArray>& names) {
        return yaml({"DriverInfo:", " DriverCarIdx: 0", " Drivers:", " - CarIdx: 9", names[0],
                     names[1], names[2], names[3]});
    };
    parse(textOf(lines));
    ASSERT_TRUE(reader.updateCarList());
    ASSERT_FALSE(reader.updateCarList());
    for (std::size_t changed = 0; changed < lines.size(); ++changed) {
        std::vector<QByteArray> names = lines;
        names[changed].replace(": A", ": a");
        parse(textOf(names));
        EXPECT_TRUE(reader.updateCarList()) << names[changed].toStdString();
        EXPECT_FALSE(reader.updateCarList());
        parse(textOf(lines));
        EXPECT_TRUE(reader.updateCarList());
    }
}

TEST_F(SessionYaml, ReportsNoChangeForTheSameTextTwice) {
    parse(drivers("3"));
    EXPECT_TRUE(reader.updateCarList());
    parse(drivers("3"));
    EXPECT_FALSE(reader.updateCarList());
}

TEST_F(SessionYaml, ReportsNoChangeWhenOnlyTheOwnCarMoves) {
    parse(drivers("3"));
    reader.updateCarList();
    parse(drivers("7"));
    EXPECT_FALSE(reader.updateCarList()) << "the list that a host sees is the same";
    EXPECT_TRUE(reader.detailedTelemetry(7));
    EXPECT_FALSE(reader.detailedTelemetry(3));
}

TEST_F(SessionYaml, ReportsARemovedName) {
    parse(drivers("3"));
    reader.updateCarList();
    reader.clear();
    parse(yaml({"DriverInfo:", " DriverCarIdx: 3", " Drivers:", " - CarIdx: 7", "   TeamName: T"}));
    EXPECT_TRUE(reader.updateCarList());
    EXPECT_TRUE(reader.driverName(7).isEmpty());
    EXPECT_EQ(reader.teamName(7), "T");
}

TEST_F(SessionYaml, FollowsATreeThatIsChangedWithoutAText) {
    parse(drivers("3"));
    reader.updateCarList();
    reader.pathSet("DriverInfo/Drivers/7/UserName", "B");
    EXPECT_TRUE(reader.updateCarList());
    EXPECT_EQ(reader.driverName(7), "B");
    reader.pathSet("DriverInfo/DriverCarIdx", "7");
    EXPECT_FALSE(reader.updateCarList());
    EXPECT_EQ(reader.myCarIdx(), 7);
}

TEST_F(SessionYaml, RestoresASlotsNumberThatWasChanged) {
    parse(drivers("3"));
    reader.updateCarList();
    reader.sample(7).setCarId("changed");
    reader.sample(7).setDetailedTelemetry(true);
    reader.updateCarList();
    EXPECT_EQ(reader.sample(7).carId(), "7");
    EXPECT_FALSE(reader.sample(7).detailedTelemetry());
}

TEST_F(SessionYaml, NeverReadsADriverBeyondTheSlots) {
    parse(yaml({"DriverInfo:", " DriverCarIdx: 3", " Drivers:", " - CarIdx: 70",
                "   UserName: Beyond", " - CarIdx: -1", "   UserName: Before"}));
    EXPECT_FALSE(reader.updateCarList());
    for (int slot = 0; slot < kSlots; ++slot) {
        EXPECT_TRUE(reader.driverName(slot).isEmpty());
    }
}

TEST_F(SessionYaml, KeepsTheNamesOfASlotWithoutAnEntry) {
    parse(drivers("3"));
    reader.updateCarList();
    reader.clear();
    parse(yaml({"DriverInfo:", " DriverCarIdx: 3", " Drivers:", " - CarIdx: 8", "   UserName: B"}));
    EXPECT_TRUE(reader.updateCarList());
    EXPECT_EQ(reader.driverName(7), "A");
    EXPECT_EQ(reader.driverName(8), "B");
}

TEST_F(SessionYaml, KeepsTheNameOfADriverWhoLeft) {
    parse(yaml({"DriverInfo:", " DriverCarIdx: 3", " Drivers:", " - CarIdx: 7", "   UserName: A",
                " - CarIdx: 8", "   UserName: B"}));
    reader.updateCarList();
    parse(yaml({"DriverInfo:", " DriverCarIdx: 3", " Drivers:", " - CarIdx: 7", "   UserName: A"}));
    EXPECT_FALSE(reader.updateCarList());
    EXPECT_EQ(reader.driverName(8), "B");
}

TEST_F(SessionYaml, ReportsAStatusChangeOfTheLastTick) {
    drive.publishSession();
    EXPECT_TRUE(reader.updateCarList()) << "new names";
    EXPECT_FALSE(reader.updateCarList());
    drive.tick();
    ASSERT_EQ(drive.status(kOwnCar), CarStatus::InPitStall);
    EXPECT_TRUE(reader.updateCarList()) << "from undefined to the stall";
    reader.prepareTick();
    EXPECT_FALSE(reader.updateCarList()) << "both ticks are equal now";
}

TEST_F(SessionYaml, ReportsAChangedStatusEvenWithoutAListOfDrivers) {
    drive.publishSession().tick();
    reader.clear();
    EXPECT_TRUE(reader.updateCarList());
    reader.prepareTick();
    EXPECT_FALSE(reader.updateCarList());
}

TEST_F(SessionYaml, ReportsTheStatusOfTheLastSlotToo) {
    drive.session.drivers = {{kOwnCar, "Own"}, {kSlots - 1, "Last"}};
    drive.publishSession().tick(3);
    ASSERT_FALSE(reader.updateCarList());
    reader.prepareTick();
    drive.advanceClock();
    drive.putOther(kSlots - 1, 0.3);
    drive.takeSnapshot();
    drive.endTick();
    ASSERT_EQ(drive.status(kSlots - 1), CarStatus::NotInWorld) << "no status change on track";
    drive.putOtherOnPitRoad(kSlots - 1, 0.4).tick();
    ASSERT_EQ(drive.status(kSlots - 1), CarStatus::InPitlane);
    EXPECT_TRUE(reader.updateCarList());
}

TEST_F(SessionYaml, ReportsARestartByTheIdentityUntilTheNextTick) {
    drive.publishSession();
    Lap lap;
    EXPECT_FALSE(reader.isSessionRestarted());
    reader.getSessionInfo(kOwnCar, &lap);
    EXPECT_TRUE(reader.isSessionRestarted());
    reader.prepareTick();
    EXPECT_FALSE(reader.isSessionRestarted());
    reader.getSessionInfo(kOwnCar, &lap);
    EXPECT_FALSE(reader.isSessionRestarted()) << "the same identity";
    drive.session.subSessionId = "679";
    drive.publishSession();
    EXPECT_FALSE(reader.isSessionRestarted()) << "a new text is not enough";
    reader.getSessionInfo(kOwnCar, &lap);
    EXPECT_TRUE(reader.isSessionRestarted());
}

TEST_F(SessionYaml, ReportsNoRestartByTheCarsBecauseTheirSessionsAreNotNumbered) {
    drive.session.sessionTypes = {"Practice", "Race"};
    drive.publishSession().leavePits();
    drive.block.set("SessionNum", 1);
    drive.advanceClock();
    drive.beginTick();
    drive.takeSnapshot();
    EXPECT_FALSE(reader.isSessionRestarted());
    drive.endTick();
    EXPECT_FALSE(reader.isSessionRestarted());
    EXPECT_EQ(drive.own().current.sessionNum, -1);
}
