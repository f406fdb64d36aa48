#include "reader/irtelemetryreader.h"
#include "reader/numbers.h"
#include "reader/sessiontype.h"
#include "reader/zeroreadings.h"

#include <QColor>

#include <array>
#include <optional>

using namespace Qt::StringLiterals;
using TLM::SDK::DynamicData;
using TLM::SDK::Lap;

namespace {

/** A text of the tree and the name under which a lap carries it. */
struct NamedText {
    QStringView key;
    QString name;
};

const auto& weekendTexts() {
    static const std::array texts{
        NamedText{u"TrackDisplayShortName", u"Track short name"_s},
        NamedText{u"TrackCity", u"Track city"_s},
        NamedText{u"TrackCountry", u"Track country"_s},
        NamedText{u"TrackNumTurns", u"Track turns"_s},
        NamedText{u"TrackSkies", u"Skies"_s},
        NamedText{u"Official", u"Official"_s},
        NamedText{u"Category", u"Category"_s},
    };
    return texts;
}

const auto& weekendNumbers() {
    static const std::array numbers{
        NamedText{u"TrackLength", u"Track length"_s},
        NamedText{u"TrackSurfaceTemp", u"Track surface temperature"_s},
        NamedText{u"TrackAirTemp", u"Air temperature"_s},
    };
    return numbers;
}

const auto& driverTexts() {
    static const std::array texts{
        NamedText{u"TeamName", u"Team"_s},
        NamedText{u"AbbrevName", u"Driver abbreviation"_s},
        NamedText{u"IRating", u"iRating"_s},
        NamedText{u"LicString", u"License"_s},
        NamedText{u"Initials", u"Driver initials"_s},
        NamedText{u"UserID", u"iRacing UserID"_s},
        NamedText{u"CarPath", u"iRacing car path"_s},
        NamedText{u"CarClassID", u"iRacing car class ID"_s},
        NamedText{u"CarID", u"iRacing car ID"_s},
        NamedText{u"CarClassShortName", u"Class"_s},
        NamedText{u"ClubName", u"Club"_s},
        NamedText{u"DivisionName", u"Division"_s},
    };
    return texts;
}

/** A text like "5.51 km": the number, and the unit behind the first blank. */
struct NumberWithUnit {
    double number;
    QString unit;

    explicit NumberWithUnit(const QString& text) {
        const QStringList parts = text.simplified().split(u' ');
        number = parts.first().toDouble();
        unit = parts.value(1);
    }
};

void setText(DynamicData& values, const QString& name, const QString& text) {
    values.setValue(name, QVariant(text), QString());
}

void setNumberWithUnit(DynamicData& values, const QString& name, const QString& text) {
    const NumberWithUnit value(text);
    values.setValue(name, QVariant(value.number), value.unit);
}

void addWeekendNumbers(DynamicData& values, const TStringTree& weekend) {
    for (const NamedText& row : weekendNumbers()) {
        setNumberWithUnit(values, row.name, weekend.value(row.key));
    }
    setNumberWithUnit(values, u"Weekend temperature"_s,
                      weekend.pathValue(u"WeekendOptions/WeatherTemp"_s));
    const NumberWithUnit northOffset(weekend.value(u"TrackNorthOffset"_s));
    values.setValue(u"YawOffset"_s, QVariant(northOffset.number), QString());
}

void addFuel(DynamicData& values, const TStringTree& driverInfo) {
    const double tank = driverInfo.value(u"DriverCarFuelMaxLtr"_s).toDouble();
    const double allowed = driverInfo.value(u"DriverCarMaxFuelPct"_s).toDouble();
    const double density = driverInfo.value(u"DriverCarFuelKgPerLtr"_s).toDouble();
    const double maximum = tank * allowed;
    values.setValue(u"Maximum fuel level"_s, QVariant(maximum), u"l"_s);
    values.setValue(u"Maximum fuel percent"_s, QVariant(allowed), u"pu"_s);
    if (reader::isDensity(density)) {
        values.setValue(u"Kg per fuel litre"_s, QVariant(density), QString());
        values.setValue(u"Maximum fuel weight"_s, QVariant(maximum * density), u"kg"_s);
    }
}

void addPreferredFuelUnit(DynamicData& values, const QString& fuelLevel) {
    const QStringList parts = fuelLevel.simplified().split(u' ');
    if (parts.size() == 2) {
        setText(values, u"Preferred fuel unit"_s, parts[1] == "kg"_L1 ? u"weight"_s : u"volume"_s);
    }
}

void addCalculator(DynamicData& values, const TStringTree& calculator) {
    const QStringList keys = calculator.valueKeys();
    for (const QString& key : keys) {
        const QStringList parts = calculator.value(key).trimmed().split(u' ', Qt::SkipEmptyParts);
        if (!parts.isEmpty()) {
            values.setValue(key, QVariant(parts.first()), parts.value(1));
        }
    }
}

QColor licenceColor(QString text) {
    text.replace("0x"_L1, "#"_L1);
    // Asked first, because QColor warns about every name that it does not know.
    return QColor::isValidColorName(text) ? QColor(text) : QColor();
}

void addDriver(DynamicData& values, const TStringTree& driver) {
    for (const NamedText& row : driverTexts()) {
        setText(values, row.name, driver.value(row.key));
    }
    values.setValue(u"Licence color"_s,
                    QVariant::fromValue(licenceColor(driver.value(u"LicColor"_s))), QString());
}

}  // namespace

void iRTelemetryReader::getSessionInfo(int carIdx, Lap* lap) {
    lap->setCarId(QString::number(carIdx));
    const LapFacts& facts = m_lapFacts.of(carIdx, originOfLapFacts(),
                                          [this, carIdx] { return collectLapFacts(carIdx); });
    facts.addTo(*lap);
    if (facts.weekend) {
        m_sessionNum = facts.weekend->sessionNumber;
    }
}

LapFactsMemory::Origin iRTelemetryReader::originOfLapFacts() const {
    const auto revisionOf = [this](QStringView key) {
        const TStringTree* const branch = sub(key);
        return branch == nullptr ? 0 : branch->branchRevision();
    };
    return {.weekend = revisionOf(u"WeekendInfo"),
            .driverInfo = revisionOf(u"DriverInfo"),
            .carSetup = revisionOf(u"CarSetup"),
            .sessionType = ownSessionType()};
}

LapFacts iRTelemetryReader::collectLapFacts(int carIdx) const {
    LapFacts facts;
    if (const TStringTree* weekend = sub(u"WeekendInfo"_s)) {
        addWeekend(facts, *weekend);
    }
    if (const TStringTree* driverInfo = sub(u"DriverInfo"_s)) {
        addDriverInfo(facts, *driverInfo, carIdx);
    }
    if (const std::optional<QString> type = ownSessionType()) {
        setText(facts.values, u"Session name"_s, *type);
        facts.session = reader::sessionOfType(*type);
    }
    return facts;
}

void iRTelemetryReader::addWeekend(LapFacts& facts, const TStringTree& weekend) const {
    const QString identity = weekend.value(u"SessionID"_s) + weekend.value(u"SubSessionID"_s);
    facts.weekend = LapFacts::Weekend{.trackName = weekend.value(u"TrackDisplayName"_s),
                                      .trackConfig = weekend.value(u"TrackConfigName"_s),
                                      .sessionId = sessionId(identity),
                                      .sessionNumber = identity.toULongLong()};
    for (const NamedText& row : weekendTexts()) {
        setText(facts.values, row.name, weekend.value(row.key));
    }
    addWeekendNumbers(facts.values, weekend);
}

void iRTelemetryReader::addDriverInfo(LapFacts& facts, const TStringTree& driverInfo,
                                      int carIdx) const {
    addFuel(facts.values, driverInfo);
    addPreferredFuelUnit(facts.values, pathValue(u"CarSetup/Chassis/Rear/FuelLevel"_s));
    for (const QString& path :
         {u"CarSetup/TiresAero/AeroCalculator"_s, u"CarSetup/TiresAero/AeroBalanceCalc"_s}) {
        if (const TStringTree* calculator = pathSub(path)) {
            addCalculator(facts.values, *calculator);
        }
    }
    if (const TStringTree* driver = driverInfo.pathSub("Drivers/"_L1 + QString::number(carIdx))) {
        facts.driver = LapFacts::Driver{.name = driver->value(u"UserName"_s),
                                        .carName = driver->value(u"CarScreenName"_s)};
        addDriver(facts.values, *driver);
    }
}

double iRTelemetryReader::trackKilometres() const {
    const TStringTree* const weekend = sub(u"WeekendInfo"_s);
    return weekend == nullptr ? 0.0 : NumberWithUnit(weekend->value(u"TrackLength"_s)).number;
}

std::optional<QString> iRTelemetryReader::ownSessionType() const {
    if (!hasOwnCarSlot()) {
        return std::nullopt;
    }
    const QVariant number = m_cars.at(m_myCarIdx).sample.value(u"sessionnum"_s).value;
    return reader::sessionTypeText(*this, reader::toInt(number));
}
