#include "reader/irtelemetryreader.h"

#include <algorithm>
#include <cstddef>

namespace {

// While the length of a lap is not known its lists double in length, here from some eight seconds
// on. The cars may have begun together, and their lists should not do that together.
constexpr qsizetype firstLapSamples = 512;
constexpr qsizetype firstLapStagger = 9;

}  // namespace

iRTelemetryReader::iRTelemetryReader() {
    initialize();
}

iRTelemetryReader::~iRTelemetryReader() = default;

void iRTelemetryReader::initialize() {
    resize(simulatorCars);
    m_myCarIdx = -1;
    m_carListRevision.reset();
    m_reserved = false;
    m_diskLoading = false;
    m_replay = -1;
    m_sessionNum = 0;
    m_lastSessionNum = 0;
}

void iRTelemetryReader::resize(int count) {
    count = std::max(count, 0);
    const qsizetype former = m_cars.size();
    m_cars.resize(count);
    ++m_recordsRevision;
    m_carListRevision.reset();
    for (qsizetype i = former; i < count; ++i) {
        m_cars[i].expectSamples(firstLapSamples + i * firstLapStagger);
    }
    m_generations.resize(static_cast<std::size_t>(count));
}

void iRTelemetryReader::setDiskLoading(bool on) {
    m_diskLoading = on;
    for (RecorderCar& car : m_cars) {
        car.diskLoading = on;
    }
}

int iRTelemetryReader::myCarIdx() const {
    return m_myCarIdx;
}

const QString& iRTelemetryReader::driverName(int car) const {
    return m_cars[car].driverName;
}

const QString& iRTelemetryReader::teamName(int car) const {
    return m_cars[car].teamName;
}

const QString& iRTelemetryReader::carName(int car) const {
    return m_cars[car].carName;
}

const QString& iRTelemetryReader::className(int car) const {
    return m_cars[car].className;
}

int iRTelemetryReader::status(int car) const {
    return static_cast<int>(m_cars[car].current.status);
}

bool iRTelemetryReader::detailedTelemetry(int car) const {
    return m_cars[car].detailedTelemetry;
}

const RecorderCar& iRTelemetryReader::recorderCar(int car) const {
    return m_cars[car];
}

TLM::SDK::Sample& iRTelemetryReader::sample(int car) {
    m_cars[car].sampleHandedOut = true;
    m_sampleHandedOut = true;
    return m_cars[car].sample;
}

const TLM::SDK::Sample& iRTelemetryReader::sample(int car) const {
    return m_cars[car].sample;
}

std::optional<quint64> iRTelemetryReader::recordsRevision() const {
    return m_sampleHandedOut ? std::nullopt : std::optional(m_recordsRevision);
}

bool iRTelemetryReader::hasOwnCarSlot() const {
    return m_myCarIdx >= 0 && m_myCarIdx < m_cars.size();
}

bool iRTelemetryReader::isReplay() const {
    return m_replay == 1;
}

bool iRTelemetryReader::isLive() const {
    return m_replay == 0;
}
