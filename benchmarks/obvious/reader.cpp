#include "benchmarks/obvious/reader.h"

#include "benchmarks/obvious/addsample.h"
#include "reader/numbers.h"

#include <QDebug>
#include <QHash>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace obvious {

using namespace Qt::StringLiterals;
using TLM::SDK::CarStatus;
using TLM::SDK::DynamicData;
using TLM::SDK::Sample;
using TLM::SDK::Session;
using TLM::SDK::Value;

namespace {

constexpr int kCarSlotCount = 64;
constexpr int kPerCarPrefixLength = 6;

template <typename Number>
Number load(const char* elements, int element) {
    Number number;
    std::memcpy(&number, elements + sizeof number * static_cast<std::size_t>(element),
                sizeof number);
    return number;
}

template <std::size_t Size>
QString fixedWidthText(const char (&text)[Size]) {
    return QString::fromUtf8(text, static_cast<qsizetype>(strnlen(text, Size)));
}

QVariant read(const DynamicData& values, const QString& name) {
    return values.value(name).value;
}

}  // namespace

Session sessionOfType(const QString& type) {
    static const QHash<QString, Session> kinds{{u"Race"_s, Session::Race},
                                               {u"Offline testing"_s, Session::OfflineTesting},
                                               {u"Qualify"_s, Session::Qualify},
                                               {u"Practice"_s, Session::Practice},
                                               {u"Warmup"_s, Session::Warmup}};
    return kinds.value(type, Session::Unknown);
}

Reader::Reader() : m_cars(kCarSlotCount) {}

void Reader::setYaml(const char* yaml) {
    TextTree::setYaml(yaml);
    if (m_replay == -1 && sub(u"WeekendInfo"_s) != nullptr) {
        m_replay = sub(u"WeekendInfo"_s)->value(u"SimMode"_s) == u"replay" ? 1 : 0;
    }
}

bool Reader::updateCarList() {
    m_myCarIdx = -1;
    if (const TextTree* info = sub(u"DriverInfo"_s)) {
        bool isNumber = false;
        const int index = info->value(u"DriverCarIdx"_s).toInt(&isNumber);
        m_myCarIdx = isNumber ? index : -1;
    }
    bool changed = false;
    if (const TextTree* drivers = pathSub(u"DriverInfo/Drivers"_s)) {
        for (int i = 0; i < m_cars.size(); ++i) {
            RecorderCar& car = m_cars[i];
            car.sample.setCarId(QString::number(i));
            car.detailedTelemetry = i == m_myCarIdx;
            car.sample.setDetailedTelemetry(car.detailedTelemetry);
            const TextTree* driver = drivers->sub(QString::number(i));
            if (driver == nullptr) {
                continue;
            }
            const auto update = [&changed, driver](QString& text, const QString& key) {
                if (text != driver->value(key)) {
                    text = driver->value(key);
                    changed = true;
                }
            };
            update(car.driverName, u"UserName"_s);
            update(car.teamName, u"TeamName"_s);
            update(car.carName, u"CarScreenName"_s);
            update(car.className, u"CarClassShortName"_s);
        }
    }
    return changed || std::any_of(m_cars.cbegin(), m_cars.cend(), [](const RecorderCar& car) {
               return car.current.status != car.previous.status;
           });
}

void Reader::setDiskLoading(bool on) {
    m_diskLoading = on;
    for (RecorderCar& car : m_cars) {
        car.diskLoading = on;
    }
}

bool Reader::hasOwnCarSlot() const {
    return m_myCarIdx >= 0 && m_myCarIdx < m_cars.size();
}

void Reader::prepareTick() {
    for (RecorderCar& car : m_cars) {
        car.previous = car.current;
        if (car.lapReady) {
            car.startLap();
            car.lapReady = false;
        }
    }
    m_lastSessionNum = m_sessionNum;
}

void Reader::getRawData(const irsdk_header* header, const irsdk_varHeader* vars, const char* data,
                        qint64 dataLength) {
    if (m_varNames.isEmpty()) {
        for (int i = 0; i < header->numVars; ++i) {
            m_varNames.append(fixedWidthText(vars[i].name).toLower());
            m_varUnits.append(fixedWidthText(vars[i].unit));
        }
    }
    QVariant value;
    for (int i = 0; i < header->numVars && i < m_varNames.size(); ++i) {
        const irsdk_varHeader& variable = vars[i];
        const int count = variable.type == irsdk_char ? 1 : variable.count;
        const auto size = static_cast<qint64>(irsdk_varTypeSize(variable.type));
        if (size > 0 && count > 0 &&
            (variable.offset < 0 || variable.offset + count * size > dataLength)) {
            continue;
        }
        for (int j = 0; j < count; ++j) {
            convert(variable, data, j, value);
            if (!m_diskLoading && m_varNames[i].startsWith("caridx"_L1)) {
                if (j < m_cars.size() && !(j == m_myCarIdx && m_replay == 0)) {
                    m_cars[j].sample.setValue(m_varNames[i].mid(kPerCarPrefixLength),
                                              Value(value, m_varUnits[i]));
                }
            } else if (hasOwnCarSlot()) {
                m_cars[m_myCarIdx].sample.setValue(m_varNames[i], Value(value, m_varUnits[i]));
            }
        }
    }
    if (!m_diskLoading && hasOwnCarSlot()) {
        distributeSessionClock();
    }
}

void Reader::convert(const irsdk_varHeader& variable, const char* data, int element,
                     QVariant& value) {
    const char* elements = data + variable.offset;
    switch (variable.type) {
        case irsdk_char:
            value = QVariant(static_cast<int>(load<signed char>(elements, element)));
            break;
        case irsdk_bool:
            value = QVariant(load<unsigned char>(elements, element) != 0);
            break;
        case irsdk_int:
        case irsdk_bitField:
            value = QVariant(load<qint32>(elements, element));
            break;
        case irsdk_float:
            value = QVariant(load<float>(elements, element));
            break;
        case irsdk_double:
            value = QVariant(load<double>(elements, element));
            break;
        default:
            break;
    }
}

void Reader::distributeSessionClock() {
    const Sample& own = m_cars.at(m_myCarIdx).sample;
    const Value time = own.value(u"sessiontime"_s);
    const Value remain = own.value(u"sessiontimeremain"_s);
    const quint64 tick = reader::toULongLong(own.value(u"sessiontick"_s).value);
    for (int k = 0; k < m_cars.size(); ++k) {
        if (k != m_myCarIdx) {
            m_cars[k].sample.setValue(u"sessiontime"_s, time);
            m_cars[k].sample.setValue(u"sessiontimeremain"_s, remain);
            m_cars[k].sample.setValue(u"sessiontick"_s, QVariant(tick), QString());
        }
    }
}

bool Reader::isSessionRestarted() const {
    if (m_lastSessionNum != m_sessionNum) {
        return true;
    }
    return std::any_of(m_cars.cbegin(), m_cars.cend(), [](const RecorderCar& car) {
        return car.current.sessionNum >= 0 && car.previous.sessionNum >= 0 &&
               car.current.sessionNum != car.previous.sessionNum;
    });
}

void Reader::processData() {
    int sessionNumber = -1;
    if (hasOwnCarSlot()) {
        sessionNumber = reader::toInt(read(m_cars[m_myCarIdx].sample, u"sessionnum"_s));
    }
    const bool sessionChanged = isSessionRestarted();
    for (int i = 0; i < m_cars.size(); ++i) {
        processCar(i, sessionNumber, sessionChanged);
    }
}

void Reader::processCar(int index, int sessionNumber, bool sessionChanged) {
    RecorderCar& car = m_cars[index];
    if (car.driverName.isEmpty()) {
        return;
    }
    const QVariant distance = read(car.sample, u"lapdistpct"_s);
    car.current.lapDistPct = distance.isValid() ? distance.toFloat() : -1.0F;
    const QVariant state = read(car.sample, u"sessionstate"_s);
    car.current.sessionState = state.isValid() ? reader::toInt(state) : 0;
    car.current.sessionTick = reader::toULongLong(read(car.sample, u"sessiontick"_s));
    if (car.current.sessionTick == car.previous.sessionTick) {
        return;
    }
    if (car.current.lapDistPct <= -0.5F) {
        car.current.status = CarStatus::NotInWorld;
        return;
    }
    bool inPitStall = false;
    bool onPitRoad = false;
    bool onTrack = false;
    if (index == m_myCarIdx) {
        readOwnCar(car, inPitStall, onPitRoad, onTrack);
    } else if (sessionNumber < 0) {
        return;
    } else {
        readOtherCar(index, sessionNumber, inPitStall, onPitRoad, onTrack);
    }
    if (car.current.sessionType == -1) {
        car.current.sessionType = static_cast<int>(sessionOfType(pathValue(
            u"SessionInfo/Sessions/"_s + QString::number(sessionNumber) + u"/SessionType"_s)));
    }
    car.updateCarStatus(inPitStall, onPitRoad, onTrack);
    car.current.lapAborted = car.isLapAborted();
    if (car.current.lapAborted || sessionChanged) {
        processLap(index, false);
    } else if (car.current.lapCompleted) {
        processLap(index, true);
    } else {
        recordSample(car);
    }
}

void Reader::readOwnCar(RecorderCar& car, bool& inPitStall, bool& onPitRoad, bool& onTrack) {
    const QVariant lap = read(car.sample, u"lap"_s);
    car.current.lap = lap.isValid() ? reader::toInt(lap) : -1;
    if (m_replay == 0) {
        const QVariant isOnTrack = read(car.sample, u"isontrack"_s);
        inPitStall = !isOnTrack.isValid() || !isOnTrack.toBool();
    } else {
        const QVariant isInPitStall = read(car.sample, u"playercarinpitstall"_s);
        inPitStall = !isInPitStall.isValid() || isInPitStall.toBool();
    }
    if (!inPitStall) {
        const QVariant pitRoad = read(car.sample, u"onpitroad"_s);
        onPitRoad = pitRoad.isValid() && pitRoad.toBool();
        onTrack = !onPitRoad;
        const QVariant last =
            read(car.sample, m_replay == 1 ? u"lastlaptime"_s : u"laplastlaptime"_s);
        car.current.lastLapTime = last.isValid() ? last.toFloat() : -1.0F;
        const QVariant running = read(car.sample, u"lapcurrentlaptime"_s);
        car.current.lapCurrentLapTime = running.isValid() ? running.toFloat() : 1e25F;
    }
    car.sample.setValue(u"fulltelemetry"_s, QVariant(1), QString());
}

void Reader::readOtherCar(int index, int sessionNumber, bool& inPitStall, bool& onPitRoad,
                          bool& onTrack) {
    RecorderCar& car = m_cars[index];
    car.current.lap = -1;
    const TextTree* session = pathSub(u"SessionInfo/Sessions/"_s + QString::number(sessionNumber));
    const TextTree* results = session == nullptr ? nullptr : session->sub(u"ResultsPositions"_s);
    for (int j = 0; results != nullptr && j < m_cars.size(); ++j) {
        const TextTree* position = results->sub(QString::number(j + 1));
        if (position != nullptr && position->value(u"CarIdx"_s).toInt() == index) {
            car.current.lap =
                reader::incrementSaturated(position->value(u"LapsComplete"_s).toInt());
            car.current.lastLapTime = static_cast<float>(position->value(u"LastTime"_s).toDouble());
            break;
        }
    }
    if (car.current.lap == -1) {
        car.current.lap =
            reader::incrementSaturated(reader::toInt(read(car.sample, u"lapcompleted"_s)));
        car.current.lastLapTime = static_cast<float>(read(car.sample, u"lastlaptime"_s).toDouble());
    }
    const QVariant pitRoad = read(car.sample, u"onpitroad"_s);
    onPitRoad = !pitRoad.isValid() || pitRoad.toBool();
    onTrack = !onPitRoad;
    const float step = car.current.lapDistPct - car.previous.lapDistPct;
    inPitStall = onPitRoad && static_cast<double>(std::fabs(step)) < 0.001;
}

void Reader::recordSample(RecorderCar& car) {
    const CarStatus status = car.current.status;
    if (status == CarStatus::WaitingForStart ||
        (car.lap->isEmpty() &&
         (status == CarStatus::InPitStall || status == CarStatus::InPitlane))) {
        return;
    }
    if (car.sample.containsValue(u"Speed"_s) && read(car.sample, u"Speed"_s).toFloat() < 1.0F) {
        return;
    }
    const QString farthestName = u"maxLapDistPct"_s;
    const auto distance = static_cast<double>(car.current.lapDistPct);
    if (!car.lap->containsValue(farthestName)) {
        car.lap->setValue(farthestName, QVariant(car.current.lapDistPct), QString());
    } else {
        const double farthest = car.lap->value(farthestName).value.toDouble();
        if (distance > farthest) {
            car.lap->setValue(farthestName, QVariant(distance), QString());
        } else if (farthest - distance > 0.5 && farthest > 0.9) {
            addSample(*car.nextLap, car.sample);
            return;
        }
    }
    if (m_replay == 1 && car.detailedTelemetry &&
        std::fabs(read(car.sample, u"replayplayspeed"_s).toDouble() - 1.0) > 0.001) {
        if (!car.lap->isEmpty()) {
            car.lap->clear();
            car.nextLap->clear();
            car.current.status = CarStatus::OutLap;
            qDebug() << "Replay lap aborted";
        }
        return;
    }
    addSample(*car.lap, car.sample);
}

}  // namespace obvious
