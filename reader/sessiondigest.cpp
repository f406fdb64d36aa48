#include "reader/sessiondigest.h"

#include "reader/numbers.h"
#include "yaml/tstringtree.h"

#include <QColor>
#include <QStringList>

#include <array>
#include <cstddef>

using namespace Qt::StringLiterals;
using TLM::SDK::DynamicData;
using TLM::SDK::Lap;
using TLM::SDK::Session;

namespace reader {

namespace {

/** A text of the tree and the name under which a lap carries it. */
struct NamedText {
    QStringView key;
    QString name;
};

const auto& weekendTexts() {
    static const std::array kTexts{
        NamedText{u"TrackDisplayShortName", u"Track short name"_s},
        NamedText{u"TrackCity", u"Track city"_s},
        NamedText{u"TrackCountry", u"Track country"_s},
        NamedText{u"TrackNumTurns", u"Track turns"_s},
        NamedText{u"TrackSkies", u"Skies"_s},
        NamedText{u"Official", u"Official"_s},
        NamedText{u"Category", u"Category"_s},
    };
    return kTexts;
}

const auto& weekendNumbers() {
    static const std::array kNumbers{
        NamedText{u"TrackLength", u"Track length"_s},
        NamedText{u"TrackSurfaceTemp", u"Track surface temperature"_s},
        NamedText{u"TrackAirTemp", u"Air temperature"_s},
    };
    return kNumbers;
}

const auto& driverTexts() {
    static const std::array kTexts{
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
    return kTexts;
}

/** A text like "5.51 km": the number, and the unit after the first blank. */
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
    if (isDensity(density)) {
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

LapFacts::Weekend weekendOf(const TStringTree& weekend) {
    const QString identity = weekend.value(u"SessionID"_s) + weekend.value(u"SubSessionID"_s);
    return {.trackName = weekend.value(u"TrackDisplayName"_s),
            .trackConfig = weekend.value(u"TrackConfigName"_s),
            .sessionId = sessionId(identity),
            .sessionNumber = identity.toULongLong()};
}

void addWeekend(LapFacts& facts, const TStringTree& weekend) {
    facts.weekend = weekendOf(weekend);
    for (const NamedText& row : weekendTexts()) {
        setText(facts.values, row.name, weekend.value(row.key));
    }
    addWeekendNumbers(facts.values, weekend);
}

/** The kind of session that the simulator's type text names exactly. */
std::optional<Session> kindOfType(QStringView type) {
    if (type == u"Race") {
        return Session::Race;
    }
    if (type == u"Offline testing") {
        return Session::OfflineTesting;
    }
    if (type == u"Qualify") {
        return Session::Qualify;
    }
    if (type == u"Practice") {
        return Session::Practice;
    }
    if (type == u"Warmup") {
        return Session::Warmup;
    }
    return std::nullopt;
}

QString pathOfSession(int number) {
    return "SessionInfo/Sessions/"_L1 + QString::number(number);
}

}  // namespace

QUuid sessionId(const QString& id) {
    constexpr int kUuidDigits = 32;
    // Not every version of Qt refuses text after the last digit of an id.
    if (id.size() > kUuidDigits) {
        return {};
    }
    QString uuid = u"%1"_s.arg(id, kUuidDigits, u'0');
    for (const int position : {8, 13, 18, 23}) {
        uuid.insert(position, u'-');
    }
    return QUuid::fromString(uuid);
}

void LapFacts::addTo(Lap& lap) const {
    if (weekend) {
        lap.setTrackName(weekend->trackName);
        lap.setTrackConfig(weekend->trackConfig);
        lap.setSessionId(weekend->sessionId);
    }
    if (driver) {
        lap.setDriverName(driver->name);
        lap.setCarName(driver->carName);
    }
    if (session) {
        lap.setSession(*session);
    }
    if (lap.data().isEmpty()) {
        lap.data() = values.data();
        return;
    }
    for (auto value = values.data().cbegin(); value != values.data().cend(); ++value) {
        lap.setValue(value.key(), value.value());
    }
}

void SessionDigest::refresh(int carCount) {
    // The tree counts from 0, and 0 is no text here.
    const quint64 revision = m_text.revision() + 1;
    if (revision == m_revision && carCount == m_carCount) {
        return;
    }
    m_revision = 0;
    m_carCount = carCount;
    m_session.reset();
    readTrack();
    readOwnCar();
    readDrivers();
    m_revision = revision;
}

void SessionDigest::readTrack() {
    const TStringTree* const weekend = m_text.sub(u"WeekendInfo"_s);
    m_trackKilometres =
        weekend == nullptr ? 0.0 : NumberWithUnit(weekend->value(u"TrackLength"_s)).number;
}

void SessionDigest::readOwnCar() {
    m_ownCar = -1;
    if (const TStringTree* const driverInfo = m_text.sub(u"DriverInfo"_s)) {
        bool isNumber = false;
        const int index = driverInfo->value(u"DriverCarIdx"_s).toInt(&isNumber);
        m_ownCar = isNumber ? index : -1;
    }
}

void SessionDigest::readDrivers() {
    const TStringTree* const drivers = m_text.pathSub(u"DriverInfo/Drivers"_s);
    m_hasDrivers = drivers != nullptr;
    m_drivers.assign(static_cast<std::size_t>(m_carCount), std::nullopt);
    for (int car = 0; m_hasDrivers && car < m_carCount; ++car) {
        if (const TStringTree* const driver = drivers->sub(QString::number(car))) {
            m_drivers[static_cast<std::size_t>(car)] =
                DriverEntry{.driverName = driver->value(u"UserName"_s),
                            .teamName = driver->value(u"TeamName"_s),
                            .carName = driver->value(u"CarScreenName"_s),
                            .className = driver->value(u"CarClassShortName"_s)};
        }
    }
}

const std::optional<DriverEntry>& SessionDigest::driver(int car) const {
    return m_drivers[static_cast<std::size_t>(car)];
}

QString SessionDigest::typeOf(int session) const {
    return m_text.pathValue(pathOfSession(session) + "/SessionType"_L1);
}

const SessionFacts& SessionDigest::session(int number) {
    if (!m_session || m_session->number != number) {
        m_session = SessionFacts{
            .number = number,
            .kind = kindOfType(typeOf(number)),
            .results = std::vector<std::optional<CarResult>>(static_cast<std::size_t>(m_carCount))};
        if (const TStringTree* const positions =
                m_text.pathSub(pathOfSession(number) + "/ResultsPositions"_L1)) {
            readResults(*positions);
        }
    }
    return *m_session;
}

/** A car that stands in two positions has the better one. */
void SessionDigest::readResults(const TStringTree& positions) {
    for (int i = 1; i <= m_carCount; ++i) {
        const TStringTree* const position = positions.sub(QString::number(i));
        const int car = position == nullptr ? -1 : position->value(u"CarIdx"_s).toInt();
        if (car < 0 || car >= m_carCount) {
            continue;
        }
        std::optional<CarResult>& result = m_session->results[static_cast<std::size_t>(car)];
        if (!result) {
            result = CarResult{incrementSaturated(position->value(u"LapsComplete"_s).toInt()),
                               static_cast<float>(position->value(u"LastTime"_s).toDouble())};
        }
    }
}

/**
 * At a session's end 64 laps are closed in one tick in which the results have just changed: facts
 * are kept for as long as the parts of the text stay the same that they were made from.
 */
const LapFacts& SessionDigest::lapFacts(int car, std::optional<int> session) {
    const Origin origin{.weekend = revisionOf(u"WeekendInfo"_s),
                        .driverInfo = revisionOf(u"DriverInfo"_s),
                        .carSetup = revisionOf(u"CarSetup"_s),
                        .sessionType = session ? std::optional(typeOf(*session)) : std::nullopt};
    // Only the car slots are asked for again and again.
    if (origin != m_factsOrigin || m_facts.size() > m_carCount) {
        m_facts.clear();
        m_factsOrigin = origin;
    }
    auto known = m_facts.constFind(car);
    if (known == m_facts.cend()) {
        known = m_facts.insert(car, collectLapFacts(car, origin.sessionType));
    }
    return *known;
}

quint64 SessionDigest::revisionOf(const QString& branch) const {
    const TStringTree* const found = m_text.sub(branch);
    return found == nullptr ? 0 : found->branchRevision();
}

LapFacts SessionDigest::collectLapFacts(int car, const std::optional<QString>& type) const {
    LapFacts facts;
    if (const TStringTree* const weekend = m_text.sub(u"WeekendInfo"_s)) {
        addWeekend(facts, *weekend);
    }
    if (const TStringTree* const driverInfo = m_text.sub(u"DriverInfo"_s)) {
        addDriverInfo(facts, *driverInfo, car);
    }
    if (type) {
        setText(facts.values, u"Session name"_s, *type);
        facts.session = kindOfType(*type);
    }
    return facts;
}

void SessionDigest::addDriverInfo(LapFacts& facts, const TStringTree& driverInfo, int car) const {
    addFuel(facts.values, driverInfo);
    addPreferredFuelUnit(facts.values, m_text.pathValue(u"CarSetup/Chassis/Rear/FuelLevel"_s));
    for (const QString& path :
         {u"CarSetup/TiresAero/AeroCalculator"_s, u"CarSetup/TiresAero/AeroBalanceCalc"_s}) {
        if (const TStringTree* const calculator = m_text.pathSub(path)) {
            addCalculator(facts.values, *calculator);
        }
    }
    if (const TStringTree* const driver =
            driverInfo.pathSub("Drivers/"_L1 + QString::number(car))) {
        facts.driver = LapFacts::Driver{.name = driver->value(u"UserName"_s),
                                        .carName = driver->value(u"CarScreenName"_s)};
        addDriver(facts.values, *driver);
    }
}

}  // namespace reader
