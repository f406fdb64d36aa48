#include "benchmarks/obvious/reader.h"
#include "reader/numbers.h"

#include <QColor>
#include <QDateTime>
#include <QDebug>
#include <QTime>
#include <QUuid>

#include <algorithm>
#include <cmath>
#include <limits>

namespace obvious {

using namespace Qt::StringLiterals;
using TLM::SDK::CarStatus;
using TLM::SDK::Channel;
using TLM::SDK::Lap;
using TLM::SDK::LapType;
using TLM::SDK::Session;

namespace {

constexpr float kInvalidLapTimeSeconds = 3599.0F;

bool fitsInt(double number) {
    return number > static_cast<double>(std::numeric_limits<int>::min()) - 1.0 &&
           number < static_cast<double>(std::numeric_limits<int>::max()) + 1.0;
}

QUuid sessionId(const QString& id) {
    if (id.size() > 32) {
        return {};
    }
    QString text = u"%1"_s.arg(id, 32, u'0');
    text.insert(8, u'-').insert(13, u'-').insert(18, u'-').insert(23, u'-');
    return QUuid::fromString(text);
}

void setText(Lap* lap, const QString& name, const QString& text) {
    lap->setValue(name, QVariant(text), QString());
}

void setNumber(Lap* lap, const QString& name, const QString& text) {
    const QStringList parts = text.simplified().split(u' ');
    lap->setValue(name, QVariant(parts[0].toDouble()), parts.size() > 1 ? parts[1] : QString());
}

void addFuel(Lap* lap, const TextTree& info) {
    const double allowed = info.value(u"DriverCarMaxFuelPct"_s).toDouble();
    const double level = info.value(u"DriverCarFuelMaxLtr"_s).toDouble() * allowed;
    const double density = info.value(u"DriverCarFuelKgPerLtr"_s).toDouble();
    lap->setValue(u"Maximum fuel level"_s, QVariant(level), u"l"_s);
    lap->setValue(u"Maximum fuel percent"_s, QVariant(allowed), u"pu"_s);
    if (std::fabs(density) > 1e-12) {
        lap->setValue(u"Kg per fuel litre"_s, QVariant(density), QString());
        lap->setValue(u"Maximum fuel weight"_s, QVariant(level * density), u"kg"_s);
    }
}

void addSpeed(Lap* lap, const Channel& distance, const Channel& dt, const QString& timeUnit) {
    auto* lapdist = new Channel;
    lapdist->setUnit(u"m"_s);
    const double kilometres = lap->value(u"Track length"_s).value.toDouble();
    const qsizetype n = dt.samples.size();
    for (qsizetype i = 0; i < n; ++i) {
        lapdist->samples.append(distance.sample(i) * kilometres * 1000.0);
    }
    auto* speed = new Channel;
    speed->setUnit(u"m/"_s + timeUnit);
    for (qsizetype i = 0; i < n - 1; ++i) {
        speed->samples.append((lapdist->sample(i + 1) - lapdist->sample(i)) / dt.sample(i));
    }
    speed->samples.append(n > 1 ? speed->sample(n - 2) : 0.0);
    for (qsizetype j = 1; j < n - 1; ++j) {
        const double d1 = speed->sample(j) - speed->sample(j - 1);
        const double d2 = speed->sample(j + 1) - speed->sample(j);
        if (d1 * d2 < 0.0 && std::fabs(d1) + std::fabs(d2) > 5.0 * std::fabs(d1 + d2) &&
            (d1 > 5.0 || d2 > 5.0)) {
            qDebug() << "peak detected" << j << speed->sample(j - 1) << speed->sample(j)
                     << speed->sample(j + 1);
            speed->setSample(j, (speed->sample(j - 1) + speed->sample(j + 1)) * 0.5);
            qDebug() << "peak fixed" << speed->sample(j);
        }
    }
    lap->addChannel(speed, u"speed"_s);
    lap->addChannel(lapdist, u"lapdist"_s);
}

}  // namespace

void Reader::getSessionInfo(int carIdx, Lap* lap) {
    lap->setCarId(QString::number(carIdx));
    if (sub(u"WeekendInfo"_s) != nullptr) {
        addWeekend(lap);
    }
    if (sub(u"DriverInfo"_s) != nullptr) {
        addDriver(carIdx, lap);
    }
    if (hasOwnCarSlot()) {
        addSession(lap);
    }
}

void Reader::addWeekend(Lap* lap) {
    const TextTree* weekend = sub(u"WeekendInfo"_s);
    lap->setTrackName(weekend->value(u"TrackDisplayName"_s));
    const QString identity = weekend->value(u"SessionID"_s) + weekend->value(u"SubSessionID"_s);
    m_sessionNum = identity.toULongLong();
    lap->setSessionId(sessionId(identity));
    lap->setTrackConfig(weekend->value(u"TrackConfigName"_s));
    setText(lap, u"Track short name"_s, weekend->value(u"TrackDisplayShortName"_s));
    setText(lap, u"Track city"_s, weekend->value(u"TrackCity"_s));
    setText(lap, u"Track country"_s, weekend->value(u"TrackCountry"_s));
    setText(lap, u"Track turns"_s, weekend->value(u"TrackNumTurns"_s));
    setText(lap, u"Skies"_s, weekend->value(u"TrackSkies"_s));
    setText(lap, u"Official"_s, weekend->value(u"Official"_s));
    setText(lap, u"Category"_s, weekend->value(u"Category"_s));
    setNumber(lap, u"Track length"_s, weekend->value(u"TrackLength"_s));
    setNumber(lap, u"Track surface temperature"_s, weekend->value(u"TrackSurfaceTemp"_s));
    setNumber(lap, u"Air temperature"_s, weekend->value(u"TrackAirTemp"_s));
    setNumber(lap, u"Weekend temperature"_s, weekend->pathValue(u"WeekendOptions/WeatherTemp"_s));
    const QStringList offset = weekend->value(u"TrackNorthOffset"_s).simplified().split(u' ');
    lap->setValue(u"YawOffset"_s, QVariant(offset[0].toDouble()), QString());
}

void Reader::addDriver(int carIdx, Lap* lap) {
    const TextTree* info = sub(u"DriverInfo"_s);
    addFuel(lap, *info);
    const QString fuelLevel = pathValue(u"CarSetup/Chassis/Rear/FuelLevel"_s);
    const QStringList fuelParts = fuelLevel.simplified().split(u' ');
    if (!fuelLevel.isEmpty() && fuelParts.size() == 2) {
        setText(lap, u"Preferred fuel unit"_s, fuelParts[1] == u"kg" ? u"weight"_s : u"volume"_s);
    }
    for (const QString& path :
         {u"CarSetup/TiresAero/AeroCalculator"_s, u"CarSetup/TiresAero/AeroBalanceCalc"_s}) {
        const TextTree* calculator = pathSub(path);
        const QStringList keys = calculator == nullptr ? QStringList() : calculator->valueKeys();
        for (const QString& key : keys) {
            const QStringList parts =
                calculator->value(key).trimmed().split(u' ', Qt::SkipEmptyParts);
            if (!parts.isEmpty()) {
                lap->setValue(key, QVariant(parts[0]), parts.size() > 1 ? parts[1] : QString());
            }
        }
    }
    const TextTree* driver = info->pathSub(u"Drivers/"_s + QString::number(carIdx));
    if (driver == nullptr) {
        return;
    }
    lap->setDriverName(driver->value(u"UserName"_s));
    lap->setCarName(driver->value(u"CarScreenName"_s));
    setText(lap, u"Team"_s, driver->value(u"TeamName"_s));
    setText(lap, u"Driver abbreviation"_s, driver->value(u"AbbrevName"_s));
    setText(lap, u"iRating"_s, driver->value(u"IRating"_s));
    setText(lap, u"License"_s, driver->value(u"LicString"_s));
    setText(lap, u"Driver initials"_s, driver->value(u"Initials"_s));
    setText(lap, u"iRacing UserID"_s, driver->value(u"UserID"_s));
    setText(lap, u"iRacing car path"_s, driver->value(u"CarPath"_s));
    setText(lap, u"iRacing car class ID"_s, driver->value(u"CarClassID"_s));
    setText(lap, u"iRacing car ID"_s, driver->value(u"CarID"_s));
    setText(lap, u"Class"_s, driver->value(u"CarClassShortName"_s));
    setText(lap, u"Club"_s, driver->value(u"ClubName"_s));
    setText(lap, u"Division"_s, driver->value(u"DivisionName"_s));
    const QString colour = driver->value(u"LicColor"_s).replace(u"0x"_s, u"#"_s);
    lap->setValue(u"Licence color"_s,
                  QVariant(QColor::isValidColorName(colour) ? QColor(colour) : QColor()),
                  QString());
}

void Reader::addSession(Lap* lap) {
    const int session = reader::toInt(m_cars[m_myCarIdx].sample.value(u"sessionnum"_s).value);
    const QString type =
        pathValue(u"SessionInfo/Sessions/"_s + QString::number(session) + u"/SessionType"_s);
    setText(lap, u"Session name"_s, type);
    if (const Session kind = sessionOfType(type); kind != Session::Unknown) {
        lap->setSession(kind);
    }
}

void Reader::preprocessLap(int index) {
    Lap* lap = m_cars[index].lap.get();
    const double yawOffset = lap->value(u"yawOffset"_s).value.toDouble();
    if (const auto yaw = lap->channel(u"Yaw"_s)) {
        for (qsizetype i = 0; i < yaw->samples.size(); ++i) {
            yaw->setSample(i, yaw->sample(i) + yawOffset);
        }
    }
    lap->removeValue(u"yawOffset"_s);
    const auto level = lap->channel(u"fuellevel"_s);
    const double density = lap->value(u"Kg per fuel litre"_s).value.toDouble();
    if (level != nullptr && std::fabs(density) > 1e-12) {
        auto* weight = new Channel;
        weight->setUnit(u"kg"_s);
        for (qsizetype i = 0; i < level->samples.size(); ++i) {
            weight->samples.append(level->sample(i) * density);
        }
        lap->addChannel(weight, u"fuelweight"_s);
    }
    const QStringList names = lap->getAvailableRecordedChannels();
    for (const QString& name : names) {
        if (lap->channel(name)->unit() == u"%") {
            lap->channel(name)->setUnit(u"pu"_s);
        }
    }
    if (index != m_myCarIdx || m_replay == 1) {
        addTimeAndDistance(lap);
    }
}

void Reader::addTimeAndDistance(Lap* lap) {
    const auto p = lap->channel(u"lapdistpct"_s);
    const auto st = lap->channel(u"sessiontime"_s);
    if (p == nullptr || st == nullptr) {
        return;
    }
    const qsizetype n = std::min(p->samples.size(), st->samples.size());
    if (n == 0) {
        return;
    }
    const auto dt = QSharedPointer<Channel>::create();
    for (qsizetype i = 0; i < n - 1; ++i) {
        dt->samples.append(st->sample(i + 1) - st->sample(i));
    }
    dt->samples.append(n > 1 ? dt->sample(n - 2) : 0.0);
    if (p->sample(0) < 0.01) {
        auto* time = new Channel;
        time->samples.append(0.0);
        for (qsizetype i = 1; i < n; ++i) {
            time->samples.append(time->sample(i - 1) + dt->sample(i - 1));
        }
        lap->addChannel(time, u"lapcurrentlaptime"_s);
    }
    if (m_replay == 0 && lap->value(u"Track length"_s).value.isValid()) {
        addSpeed(lap, *p, *dt, st->unit());
    }
    lap->addChannel(dt, u"dt"_s);
}

void Reader::processLap(int index, bool completed) {
    RecorderCar& car = m_cars[index];
    RecorderSample& current = car.current;
    const RecorderSample& previous = car.previous;
    Lap* lap = car.lap.get();
    car.lapReady = true;
    if (lap->isEmpty()) {
        return;
    }
    if (previous.status == CarStatus::OutLap) {
        lap->setLapType(LapType::OutLap);
    } else if (previous.status == CarStatus::FlyingLap) {
        lap->setLapType(LapType::FlyingLap);
    }
    const float t = current.lastLapTime;
    if (t < 0.0F || std::fabs(t) <= 1e-5F || !completed ||
        (lap->lapType() == LapType::OutLap && current.sessionType != 5) ||
        !fitsInt(static_cast<double>(1000.0F * t))) {
        current.lastLapTime = kInvalidLapTimeSeconds;
    }
    lap->setLapTime(QTime(0, 0, 0, 0).addMSecs(static_cast<int>(1000.0F * current.lastLapTime)));
    lap->setLapId(previous.lapId);
    lap->setStintId(previous.stintId);
    if (completed) {
        lap->setLapInSession(std::max(previous.lap, 1) - 1);
        lap->setLapInStint(previous.lapInStint);
    } else {
        const auto numbers = lap->channel(u"lap"_s);
        if (current.lap == 0 && current.lapInStint > 0 && numbers != nullptr &&
            !numbers->samples.isEmpty() && fitsInt(numbers->sample(0))) {
            current.lap = static_cast<qint32>(numbers->sample(0));
        }
        lap->setLapInSession(m_diskLoading ? current.lap : std::max(previous.lap, 0));
        lap->setLapInStint(m_diskLoading ? current.lapInStint : previous.lapInStint);
    }
    lap->setStintInSession(previous.stintInSession);
    lap->setCompleted(completed);
    lap->setDetailedTelemetry(car.detailedTelemetry);
    lap->setDateTime(QDateTime::currentDateTime());
    lap->removeValue(u"maxLapDistPct"_s);
    getSessionInfo(index, lap);
    if (m_replay == 1) {
        lap->removeChannel(u"lapcurrentlaptime"_s);
    }
    preprocessLap(index);
    normalizeChannelBeginning(index, u"lapcurrentlaptime"_s);
    normalizeChannelBeginning(index, u"energybatterytomgu_klap"_s);
    normalizeChannelBeginning(index, u"energymgu_klapdeploypct"_s);
}

void Reader::normalizeChannelBeginning(int index, const QString& name) {
    const auto ch = m_cars[index].lap->channel(name);
    const auto p = m_cars[index].lap->channel(u"lapdistpct"_s);
    if (ch == nullptr || p == nullptr) {
        return;
    }
    double ref = -1.0;
    double refPct = -1.0;
    for (qsizetype i = std::min(ch->samples.size(), p->samples.size()) - 2; i >= 0; --i) {
        if (ch->sample(i) > ch->sample(i + 1) || std::fabs(ch->sample(i)) <= 1e-12) {
            if (ref < 0.0) {
                ref = ch->sample(i + 1);
                refPct = p->sample(i + 1);
            }
            if (std::fabs(ref) <= 1e-12) {
                return;
            }
            ch->setSample(i, p->sample(i) * ref / refPct);
        }
    }
}

}  // namespace obvious
