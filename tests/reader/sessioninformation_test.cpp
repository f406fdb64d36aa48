#include "tests/reader/readerfixture.h"

#include <QColor>
#include <QVariant>

#include <cmath>
#include <utility>
#include <vector>

using namespace readertest;
using TLM::SDK::Lap;
using TLM::SDK::Session;

namespace {

class SessionInformation : public ReaderTest {
protected:
    Lap lap;

    /** Adds the information of a session text to a lap of the later car. */
    void inform(const QByteArray& text) {
        drive.reader.setYaml(text.constData());
        drive.reader.getSessionInfo(kLaterCar, &lap);
    }

    void informOfWeekend(const QByteArray& line) {
        inform(yaml({"WeekendInfo:", " Filler: x", line}));
    }

    void informOfDriverInfo(std::initializer_list<QByteArray> lines) {
        QByteArray text = "---\nDriverInfo:\n Filler: x\n";
        for (const QByteArray& line : lines) {
            text += line + "\n";
        }
        inform(text);
    }

    void expectText(const QString& name, const QString& text) {
        ASSERT_TRUE(lap.containsValue(name)) << name.toStdString();
        EXPECT_EQ(lap.value(name).value.typeId(), QMetaType::QString) << name.toStdString();
        EXPECT_EQ(lap.value(name).value.toString(), text) << name.toStdString();
        EXPECT_TRUE(lap.value(name).unit().isEmpty()) << name.toStdString();
    }

    void expectNumber(const QString& name, double number, const QString& unit) {
        ASSERT_TRUE(lap.containsValue(name)) << name.toStdString();
        EXPECT_EQ(lap.value(name).value.typeId(), QMetaType::Double) << name.toStdString();
        EXPECT_DOUBLE_EQ(lap.value(name).value.toDouble(), number) << name.toStdString();
        EXPECT_EQ(lap.value(name).unit(), unit) << name.toStdString();
    }

    void expectHeaderTexts(const QString& track, const QString& config, const QString& driver,
                           const QString& car) {
        EXPECT_EQ(lap.trackName(), track);
        EXPECT_EQ(lap.trackConfig(), config);
        EXPECT_EQ(lap.driverName(), driver);
        EXPECT_EQ(lap.carName(), car);
    }

    /** A live drive in session `number` of the fixture's sessions. */
    void driveInSession(int number) {
        drive.publishSession();
        drive.block.set("SessionNum", number);
        drive.tick();
        drive.reader.getSessionInfo(kLaterCar, &lap);
    }
};

}  // namespace

TEST_F(SessionInformation, OfAnEmptyTreeIsOnlyTheCarsNumber) {
    drive.reader.getSessionInfo(kLaterCar, &lap);
    EXPECT_EQ(lap.carId(), "7");
    EXPECT_TRUE(lap.valueNameList().isEmpty());
    expectHeaderTexts("", "", "", "");
    EXPECT_TRUE(lap.sessionId().isNull());
    EXPECT_EQ(lap.session(), Session::Unknown);
}

TEST_F(SessionInformation, PutsTheTrackIntoTheHeader) {
    inform(yaml({"WeekendInfo:", " TrackDisplayName: Long Ring", " TrackConfigName: GP"}));
    expectHeaderTexts("Long Ring", "GP", "", "");
}

TEST_F(SessionInformation, ContainsEachTextOfTheWeekend) {
    const std::vector<std::pair<QByteArray, QString>> rows = {
        {"TrackDisplayShortName", "Track short name"},
        {"TrackCity", "Track city"},
        {"TrackCountry", "Track country"},
        {"TrackNumTurns", "Track turns"},
        {"TrackSkies", "Skies"},
        {"Official", "Official"},
        {"Category", "Category"}};
    for (const auto& [key, name] : rows) {
        lap = Lap();
        informOfWeekend(" " + key + ": The " + key);
        expectText(name, "The " + QString(key));
    }
}

TEST_F(SessionInformation, ContainsEachQuantityOfTheWeekend) {
    const std::vector<std::pair<QByteArray, QString>> rows = {
        {"TrackLength", "Track length"},
        {"TrackSurfaceTemp", "Track surface temperature"},
        {"TrackAirTemp", "Air temperature"}};
    for (const auto& [key, name] : rows) {
        lap = Lap();
        informOfWeekend(" " + key + ": 5.51 km");
        expectNumber(name, 5.51, "km");
    }
}

TEST_F(SessionInformation, ContainsTheWeatherOfTheWeekendsOptions) {
    inform(yaml({"WeekendInfo:", " WeekendOptions:", "  WeatherTemp: 25.5 C"}));
    expectNumber("Weekend temperature", 25.5, "C");
}

TEST_F(SessionInformation, SetsEveryWeekendValueEvenWithoutItsText) {
    informOfWeekend(" TrackName: x");
    EXPECT_EQ(lap.valueNameList(),
              QStringList({"Air temperature", "Category", "Official", "Skies", "Track city",
                           "Track country", "Track length", "Track short name",
                           "Track surface temperature", "Track turns", "Weekend temperature",
                           "YawOffset"}));
    expectNumber("Track length", 0.0, "");
    expectNumber("Air temperature", 0.0, "");
    expectNumber("Track surface temperature", 0.0, "");
    expectNumber("Weekend temperature", 0.0, "");
    expectNumber("YawOffset", 0.0, "");
    expectText("Track city", "");
}

TEST_F(SessionInformation, SplitsANumberFromItsUnit) {
    const std::vector<std::pair<QByteArray, std::pair<double, QString>>> rows = {
        {"5.51 km", {5.51, "km"}},
        {"5.51", {5.51, ""}},
        {"  5.51   km  ", {5.51, "km"}},
        {"5.51\tkm", {5.51, "km"}},
        {"5.51 km long", {5.51, "km"}},
        {"long km", {0.0, "km"}},
        {"", {0.0, ""}},
        {"-1e3 m", {-1000.0, "m"}},
        {"5,51 km", {0.0, "km"}},
        {"5.51 km\r", {5.51, "km"}},
        {"5.51km", {0.0, ""}}};
    for (const auto& [text, expected] : rows) {
        informOfWeekend(" TrackLength: " + text);
        expectNumber("Track length", expected.first, expected.second);
    }
}

TEST_F(SessionInformation, DropsTheUnitOfTheNorthOffset) {
    for (const QByteArray& text :
         {QByteArray("1.5708 rad"), QByteArray(" 1.5708  rad "), QByteArray("1.5708")}) {
        informOfWeekend(" TrackNorthOffset: " + text);
        expectNumber("YawOffset", 1.5708, "");
    }
    informOfWeekend(" TrackNorthOffset: north");
    expectNumber("YawOffset", 0.0, "");
}

TEST_F(SessionInformation, JoinsTheTwoSessionNumbersToTheIdentity) {
    inform(yaml({"WeekendInfo:", " SessionID: 12345", " SubSessionID: 678"}));
    EXPECT_EQ(lap.sessionId(), QUuid("00000000-0000-0000-0000-000012345678"));
    EXPECT_TRUE(drive.reader.isSessionRestarted());
}

TEST_F(SessionInformation, TreatsAnIdentityThatIsNotANumberAsZero) {
    inform(yaml({"WeekendInfo:", " SessionID: abc", " SubSessionID: 1"}));
    EXPECT_EQ(lap.sessionId(), QUuid("00000000-0000-0000-0000-00000000abc1"));
    EXPECT_FALSE(drive.reader.isSessionRestarted());
    inform(yaml({"WeekendInfo:", " SessionID: 99999999999", " SubSessionID: 99999999999"}));
    EXPECT_EQ(lap.sessionId(), QUuid("00000000-0099-9999-9999-999999999999"));
    EXPECT_FALSE(drive.reader.isSessionRestarted()) << "22 digits fit no 64 bits";
    inform(yaml({"WeekendInfo:", " SessionID: 18446744073", " SubSessionID: 709551615"}));
    EXPECT_TRUE(drive.reader.isSessionRestarted()) << "this one fits";
}

TEST_F(SessionInformation, MultipliesTheTanksSizeByTheAllowedFraction) {
    informOfDriverInfo({" DriverCarFuelMaxLtr: 120.000", " DriverCarMaxFuelPct: 0.500",
                        " DriverCarFuelKgPerLtr: 0.750"});
    expectNumber("Maximum fuel level", 60.0, "l");
    expectNumber("Maximum fuel percent", 0.5, "pu");
    expectNumber("Kg per fuel litre", 0.75, "");
    expectNumber("Maximum fuel weight", 45.0, "kg");
}

TEST_F(SessionInformation, AcceptsANegativeFuelDensity) {
    informOfDriverInfo(
        {" DriverCarFuelMaxLtr: 100", " DriverCarMaxFuelPct: 1", " DriverCarFuelKgPerLtr: -0.75"});
    expectNumber("Kg per fuel litre", -0.75, "");
    expectNumber("Maximum fuel weight", -75.0, "kg");
}

TEST_F(SessionInformation, IgnoresAFuelDensityOfNearlyZero) {
    for (const QByteArray& none : {QByteArray("0"), QByteArray("1e-12"), QByteArray("-1e-12"),
                                   QByteArray("heavy"), QByteArray("")}) {
        lap = Lap();
        informOfDriverInfo({" DriverCarFuelMaxLtr: 100", " DriverCarMaxFuelPct: 1",
                            " DriverCarFuelKgPerLtr: " + none});
        EXPECT_FALSE(lap.containsValue("Kg per fuel litre")) << none.toStdString();
        EXPECT_FALSE(lap.containsValue("Maximum fuel weight")) << none.toStdString();
        expectNumber("Maximum fuel level", 100.0, "l");
    }
    for (const QByteArray& some : {QByteArray("1.1e-12"), QByteArray("-1.1e-12")}) {
        lap = Lap();
        informOfDriverInfo({" DriverCarFuelKgPerLtr: " + some});
        expectNumber("Kg per fuel litre", some.toDouble(), "");
        EXPECT_TRUE(lap.containsValue("Maximum fuel weight"));
    }
}

TEST_F(SessionInformation, HasAMaximumFuelOfZeroWithoutItsTexts) {
    informOfDriverInfo({});
    expectNumber("Maximum fuel level", 0.0, "l");
    expectNumber("Maximum fuel percent", 0.0, "pu");
    EXPECT_EQ(lap.valueNameList(), QStringList({"Maximum fuel level", "Maximum fuel percent"}));
}

TEST_F(SessionInformation, UsesTheFuelUnitOfTheSetUp) {
    const std::vector<std::pair<QByteArray, QString>> rows = {{"60.0 L", "volume"},
                                                              {"45.0 kg", "weight"},
                                                              {" 45.0  kg ", "weight"},
                                                              {"45.0 KG", "volume"},
                                                              {"12 gal", "volume"}};
    for (const auto& [text, unit] : rows) {
        informOfDriverInfo({"CarSetup:", " Chassis:", "  Rear:", "   FuelLevel: " + text});
        expectText("Preferred fuel unit", unit);
    }
    for (const QByteArray& text :
         {QByteArray("60.0"), QByteArray("60.0 kg more"), QByteArray(""), QByteArray("  ")}) {
        lap = Lap();
        informOfDriverInfo({"CarSetup:", " Chassis:", "  Rear:", "   FuelLevel: " + text});
        EXPECT_FALSE(lap.containsValue("Preferred fuel unit")) << text.toStdString();
    }
}

TEST_F(SessionInformation, ContainsTheValuesOfTheAerodynamicsCalculators) {
    informOfDriverInfo(
        {"CarSetup:", " TiresAero:", "  AeroCalculator:", "   FrontRhAtSpeed: 25.0 mm",
         "   Plain: 12", "   Empty: ", "   Blank:    ", "   Wide:   48.5    %   of   all ",
         "   Odd: text", "  AeroBalanceCalc:", "   RearRhAtSpeed: 31.0 mm"});
    EXPECT_EQ(lap.value("FrontRhAtSpeed").value, QVariant(QString("25.0")));
    EXPECT_EQ(lap.value("FrontRhAtSpeed").value.typeId(), QMetaType::QString);
    EXPECT_EQ(lap.value("FrontRhAtSpeed").unit(), "mm");
    expectText("Plain", "12");
    expectText("Odd", "text");
    EXPECT_FALSE(lap.containsValue("Empty"));
    EXPECT_FALSE(lap.containsValue("Blank"));
    EXPECT_EQ(lap.value("Wide").value.toString(), "48.5");
    EXPECT_EQ(lap.value("Wide").unit(), "%");
    EXPECT_EQ(lap.value("RearRhAtSpeed").value.toString(), "31.0");
    EXPECT_EQ(lap.value("RearRhAtSpeed").unit(), "mm");
}

TEST_F(SessionInformation, SplitsAerodynamicsAtBlanksOnly) {
    informOfDriverInfo({"CarSetup:", " TiresAero:", "  AeroCalculator:", "   Tab: 25.0\tmm"});
    expectText("Tab", "25.0\tmm");
}

TEST_F(SessionInformation, PrefersTheSecondCalculator) {
    informOfDriverInfo({"CarSetup:", " TiresAero:", "  AeroBalanceCalc:", "   Wing: 2 deg",
                        "  AeroCalculator:", "   Wing: 1 deg"});
    EXPECT_EQ(lap.value("Wing").value.toString(), "2");
}

TEST_F(SessionInformation, PrefersTheLaterOfEqualNames) {
    informOfDriverInfo({" DriverCarFuelMaxLtr: 100", " DriverCarMaxFuelPct: 1",
                        " Drivers:", " - CarIdx: 7", "   TeamName: Aces",
                        "CarSetup:", " Chassis:", "  Rear:", "   FuelLevel: 45.0 kg",
                        " TiresAero:", "  AeroCalculator:", "   Team: aero",
                        "   Preferred fuel unit: aero", "   Maximum fuel level: aero"});
    expectText("Team", "Aces");
    expectText("Preferred fuel unit", "aero");
    expectText("Maximum fuel level", "aero");
}

TEST_F(SessionInformation, ReadsTheSetUpOnlyBesideDriverInfo) {
    inform(yaml({"CarSetup:", " Chassis:", "  Rear:", "   FuelLevel: 45.0 kg",
                 " TiresAero:", "  AeroCalculator:", "   Wing: 1 deg"}));
    EXPECT_TRUE(lap.valueNameList().isEmpty());
}

TEST_F(SessionInformation, PutsTheDriverIntoTheHeader) {
    informOfDriverInfo(
        {" Drivers:", " - CarIdx: 7", "   UserName: Zed Zest", "   CarScreenName: Roadster"});
    expectHeaderTexts("", "", "Zed Zest", "Roadster");
}

TEST_F(SessionInformation, ContainsEachTextOfTheDriver) {
    const std::vector<std::pair<QByteArray, QString>> rows = {
        {"TeamName", "Team"},
        {"AbbrevName", "Driver abbreviation"},
        {"IRating", "iRating"},
        {"LicString", "License"},
        {"Initials", "Driver initials"},
        {"UserID", "iRacing UserID"},
        {"CarPath", "iRacing car path"},
        {"CarClassID", "iRacing car class ID"},
        {"CarID", "iRacing car ID"},
        {"CarClassShortName", "Class"},
        {"ClubName", "Club"},
        {"DivisionName", "Division"}};
    for (const auto& [key, name] : rows) {
        lap = Lap();
        informOfDriverInfo({" Drivers:", " - CarIdx: 7", "   " + key + ": The " + key});
        expectText(name, "The " + QString(key));
    }
    EXPECT_EQ(lap.valueNameList(),
              QStringList({"Class", "Club", "Division", "Driver abbreviation", "Driver initials",
                           "Licence color", "License", "Maximum fuel level", "Maximum fuel percent",
                           "Team", "iRacing UserID", "iRacing car ID", "iRacing car class ID",
                           "iRacing car path", "iRating"}));
}

TEST_F(SessionInformation, ContainsTheLicencesColour) {
    informOfDriverInfo({" Drivers:", " - CarIdx: 7", "   LicColor: 0xfc0706"});
    EXPECT_EQ(lap.value("Licence color").value.typeId(), QMetaType::QColor);
    EXPECT_EQ(lap.value("Licence color").value.value<QColor>(), QColor(0xfc, 0x07, 0x06));
    EXPECT_TRUE(lap.value("Licence color").unit().isEmpty());
    informOfDriverInfo({" Drivers:", " - CarIdx: 7", "   LicColor: #0153db"});
    EXPECT_EQ(lap.value("Licence color").value.value<QColor>(), QColor(0x01, 0x53, 0xdb));
}

TEST_F(SessionInformation, HasAnInvalidColourForAnyOtherText) {
    const DebugLines silence;
    for (const QByteArray& text :
         {QByteArray("0XFC0706"), QByteArray("undefined"), QByteArray(""), QByteArray("0x12")}) {
        informOfDriverInfo({" Drivers:", " - CarIdx: 7", "   LicColor: " + text});
        EXPECT_EQ(lap.value("Licence color").value.typeId(), QMetaType::QColor);
        EXPECT_FALSE(lap.value("Licence color").value.value<QColor>().isValid())
            << text.toStdString();
    }
}

TEST_F(SessionInformation, IsOnlyAboutTheRequestedCar) {
    informOfDriverInfo({" Drivers:", " - CarIdx: 1", "   UserName: Earlier", " - CarIdx: 70",
                        "   UserName: Beyond"});
    EXPECT_TRUE(lap.driverName().isEmpty());
    EXPECT_FALSE(lap.containsValue("Team"));
    drive.reader.getSessionInfo(kEarlierCar, &lap);
    EXPECT_EQ(lap.driverName(), "Earlier");
    EXPECT_EQ(lap.carId(), "1");
}

TEST_F(SessionInformation, NamesTheSessionByTheOwnCarsSessionNumber) {
    drive.session.sessionTypes = {"Practice", "Qualify"};
    driveInSession(1);
    expectText("Session name", "Qualify");
    EXPECT_EQ(lap.session(), Session::Qualify);
}

TEST_F(SessionInformation, RecognizesFiveKindsOfSessions) {
    const std::vector<std::pair<QByteArray, Session>> kinds = {
        {"Race", Session::Race},
        {"Offline testing", Session::OfflineTesting},
        {"Qualify", Session::Qualify},
        {"Practice", Session::Practice},
        {"Warmup", Session::Warmup}};
    for (const auto& [text, kind] : kinds) {
        lap = Lap();
        drive.session.sessionTypes = {text};
        driveInSession(0);
        expectText("Session name", QString(text));
        EXPECT_EQ(lap.session(), kind) << text.toStdString();
    }
}

TEST_F(SessionInformation, DoesNotSetTheKindOfAnUnknownSession) {
    for (const QByteArray& text : {QByteArray("Lone Qualify"), QByteArray("race"),
                                   QByteArray("Offline Testing"), QByteArray("Race ")}) {
        lap.setSession(Session::Warmup);
        drive.session.sessionTypes = {text};
        driveInSession(0);
        expectText("Session name", QString(text));
        EXPECT_EQ(lap.session(), Session::Warmup) << text.toStdString();
    }
}

TEST_F(SessionInformation, GivesAMissingSessionANullName) {
    driveInSession(5);
    expectText("Session name", "");
    EXPECT_TRUE(lap.value("Session name").value.toString().isNull());
    EXPECT_EQ(lap.session(), Session::Unknown);
}

TEST_F(SessionInformation, HasNoSessionWithoutAnOwnCar) {
    for (const QByteArray& own : {QByteArray("none"), QByteArray("64"), QByteArray("-3")}) {
        lap = Lap();
        drive.session.ownCar = own;
        driveInSession(0);
        EXPECT_FALSE(lap.containsValue("Session name")) << own.toStdString();
        EXPECT_EQ(lap.session(), Session::Unknown);
        EXPECT_EQ(lap.trackName(), "Testring");
    }
}

TEST_F(SessionInformation, TreatsAMissingSessionNumberAsZero) {
    drive.publishSession();
    drive.reader.updateCarList();
    drive.reader.getSessionInfo(kLaterCar, &lap);
    expectText("Session name", "Practice");
    EXPECT_EQ(lap.session(), Session::Practice);
}

TEST_F(SessionInformation, FollowsATreeThatIsChangedWithoutAText) {
    driveInSession(0);
    drive.reader.pathSet("SessionInfo/Sessions/0/SessionType", "Race");
    drive.reader.pathSet("WeekendInfo/TrackDisplayName", "Other");
    drive.reader.getSessionInfo(kLaterCar, &lap);
    EXPECT_EQ(lap.session(), Session::Race);
    EXPECT_EQ(lap.trackName(), "Other");
}

TEST_F(SessionInformation, IsSharedByTheLapsOfACar) {
    driveInSession(0);
    Lap second;
    drive.reader.pathSet("SessionInfo/Sessions/0/ResultsPositions/1/LapsComplete", "2");
    drive.reader.getSessionInfo(kLaterCar, &second);
    EXPECT_TRUE(second.data().isSharedWith(lap.data())) << "results are not part of it";
    second.setValue("Track city", QVariant("Elsewhere"), QString());
    second.removeValue("Skies");
    Lap third;
    drive.reader.getSessionInfo(kLaterCar, &third);
    EXPECT_TRUE(third.data().isSharedWith(lap.data())) << "a change of one lap does not affect it";
}

TEST_F(SessionInformation, KeepsOtherValuesOfALap) {
    lap.setValue("Own value", QVariant(7), "u");
    lap.setValue("Track city", QVariant("Elsewhere"), QString());
    informOfWeekend(" TrackCity: Here");
    expectText("Track city", "Here");
    EXPECT_EQ(lap.value("Own value").value.toInt(), 7);
}

TEST_F(SessionInformation, FollowsEverySectionOfTheTextThatItUses) {
    driveInSession(0);
    const std::vector<std::pair<const char*, const char*>> changes = {
        {"WeekendInfo/TrackCity", "Elsewhere"},
        {"DriverInfo/Drivers/7/TeamName", "Other"},
        {"DriverInfo/DriverCarMaxFuelPct", "0.5"},
        {"CarSetup/Chassis/Rear/FuelLevel", "47 kg"},
        {"CarSetup/TiresAero/AeroCalculator/Wing", "12 deg"}};
    const auto informed = [this] {
        Lap told;
        drive.reader.getSessionInfo(kLaterCar, &told);
        QStringList texts;
        for (auto it = told.data().cbegin(); it != told.data().cend(); ++it) {
            texts += it.key() + u'=' + it->print();
        }
        return texts;
    };
    for (const auto& [path, text] : changes) {
        const QStringList before = informed();
        drive.reader.pathSet(path, text);
        EXPECT_NE(informed(), before) << path;
    }
    const QStringList before = informed();
    drive.reader.addSub(QString("WeekendInfo"));
    EXPECT_EQ(informed(), before);
}

TEST_F(SessionInformation, IsDifferentForEveryCar) {
    driveInSession(0);
    for (const int car : {kEarlierCar, kLaterCar, kEarlierCar}) {
        Lap told;
        drive.reader.getSessionInfo(car, &told);
        EXPECT_EQ(told.carId(), QString::number(car));
        EXPECT_EQ(told.driverName(), drive.reader.driverName(car));
    }
    for (int car = -200; car < 200; ++car) {
        Lap told;
        drive.reader.getSessionInfo(car, &told);
        EXPECT_EQ(told.carId(), QString::number(car));
        EXPECT_EQ(told.trackName(), lap.trackName());
    }
}

TEST_F(SessionInformation, AcceptsAnEmptyWeekend) {
    lap.setTrackName("Before");
    drive.reader.getSessionInfo(kLaterCar, &lap);
    EXPECT_EQ(lap.trackName(), "Before");
    drive.reader.addSub(QString("WeekendInfo"));
    drive.reader.getSessionInfo(kLaterCar, &lap);
    EXPECT_TRUE(lap.trackName().isEmpty());
    EXPECT_TRUE(lap.containsValue("Track length"));
}

TEST_F(SessionInformation, SurvivesNaNInfinitiesAndHugeNumbers) {
    for (const QByteArray& text : {QByteArray("nan"), QByteArray("inf"), QByteArray("-inf"),
                                   QByteArray("1e400"), QByteArray("1e25")}) {
        informOfWeekend(" TrackLength: " + text + " km");
        EXPECT_TRUE(lap.containsValue("Track length"));
        informOfDriverInfo({" DriverCarFuelMaxLtr: " + text, " DriverCarMaxFuelPct: " + text,
                            " DriverCarFuelKgPerLtr: " + text});
        EXPECT_TRUE(lap.containsValue("Maximum fuel level"));
    }
}
