#include "reader/irtelemetryreader.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

bool assignIfChanged(QString& text, const QString& newText) {
    if (text == newText) {
        return false;
    }
    text = newText;
    return true;
}

}  // namespace

void iRTelemetryReader::setYaml(const char* yaml) {
    TYamlTree::setYaml(yaml);
    m_trackKilometres = trackKilometres();
    settleReplay();
}

void iRTelemetryReader::settleReplay() {
    if (m_replay != -1) {
        return;
    }
    const TStringTree* weekend = sub(u"WeekendInfo"_s);
    if (weekend == nullptr) {
        return;
    }
    m_replay = weekend->value(u"SimMode"_s) == "replay"_L1 ? 1 : 0;
}

QUuid iRTelemetryReader::sessionId(const QString& id) const {
    constexpr int uuidDigits = 32;
    // Not every version of Qt refuses text behind the last digit of an id.
    if (id.size() > uuidDigits) {
        return {};
    }
    QString uuid = u"%1"_s.arg(id, uuidDigits, u'0');
    for (const int position : {8, 13, 18, 23}) {
        uuid.insert(position, u'-');
    }
    return QUuid::fromString(uuid);
}

bool iRTelemetryReader::updateCarList() {
    // Every name follows from the tree, which rarely changes from one tick to the next.
    if (m_carListRevision == revision() && !m_sampleHandedOut) {
        return hasStatusChanged();
    }
    m_carListRevision = revision();
    updateOwnCarIndex();
    return updateDrivers() || hasStatusChanged();
}

bool iRTelemetryReader::updateDrivers() {
    const TStringTree* const drivers = pathSub(u"DriverInfo/Drivers"_s);
    if (drivers == nullptr) {
        return false;
    }
    ++m_recordsRevision;
    bool changed = false;
    for (int i = 0; i < m_cars.size(); ++i) {
        changed = updateDriver(i, *drivers) || changed;
    }
    return changed;
}

void iRTelemetryReader::updateOwnCarIndex() {
    m_myCarIdx = -1;
    const TStringTree* driverInfo = sub(u"DriverInfo"_s);
    if (driverInfo == nullptr) {
        return;
    }
    bool isNumber = false;
    const int index = driverInfo->value(u"DriverCarIdx"_s).toInt(&isNumber);
    if (isNumber) {
        m_myCarIdx = index;
    }
}

bool iRTelemetryReader::updateDriver(int index, const TStringTree& drivers) {
    RecorderCar& car = m_cars[index];
    const QString key = QString::number(index);
    car.sample.setCarId(key);
    car.detailedTelemetry = index == m_myCarIdx;
    car.sample.setDetailedTelemetry(car.detailedTelemetry);
    const TStringTree* driver = drivers.sub(key);
    if (driver == nullptr) {
        return false;
    }
    bool changed = assignIfChanged(car.driverName, driver->value(u"UserName"_s));
    changed = assignIfChanged(car.teamName, driver->value(u"TeamName"_s)) || changed;
    changed = assignIfChanged(car.carName, driver->value(u"CarScreenName"_s)) || changed;
    changed = assignIfChanged(car.className, driver->value(u"CarClassShortName"_s)) || changed;
    return changed;
}

bool iRTelemetryReader::hasStatusChanged() const {
    return std::any_of(m_cars.cbegin(), m_cars.cend(), [](const RecorderCar& car) {
        return car.current.status != car.previous.status;
    });
}

bool iRTelemetryReader::isSessionRestarted() const {
    if (m_lastSessionNum != m_sessionNum) {
        return true;
    }
    return std::any_of(m_cars.cbegin(), m_cars.cend(), [](const RecorderCar& car) {
        return car.current.sessionNum >= 0 && car.previous.sessionNum >= 0 &&
               car.current.sessionNum != car.previous.sessionNum;
    });
}
