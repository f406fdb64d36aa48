#include "reader/irtelemetryreader.h"

#include "reader/carprocessing.h"
#include "reader/lapcompletion.h"
#include "reader/numbers.h"

#include <QDebug>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <limits>
#include <utility>

using namespace Qt::StringLiterals;
using TLM::SDK::Lap;
using TLM::SDK::Sample;
using TLM::SDK::Value;

namespace reader {

namespace {

// While the length of a lap is not known its channels double in length, here from some eight
// seconds on. The cars may have begun together, and should not do that together.
constexpr qsizetype kFirstLapSamples = 512;
constexpr qsizetype kFirstLapStagger = 9;

constexpr double kInWorldLapDistance = -0.2;

template <std::size_t Size>
QString fixedWidthText(const char (&text)[Size]) {
    const char* const end = std::find(std::begin(text), std::end(text), '\0');
    return QString::fromUtf8(text, end - std::begin(text));
}

bool assignIfChanged(QString& text, const QString& newText) {
    if (text == newText) {
        return false;
    }
    text = newText;
    return true;
}

}  // namespace

void writeDebugLines(const QStringList& lines) {
    for (const QString& line : lines) {
        // Not by a stream: that writes in its destructor, out of which no exception can come.
        qDebug("%s", qUtf8Printable(line));
    }
}

iRTelemetryReader::iRTelemetryReader() {
    initialize();
}

iRTelemetryReader::~iRTelemetryReader() = default;

void iRTelemetryReader::initialize() {
    resize(kSimulatorCars);
    m_myCarIdx = -1;
    m_carListRevision = 0;
    m_reserved = false;
    m_diskLoading = false;
    m_replay = Feed::Unknown;
    m_sessionNum = 0;
    m_lastSessionNum = 0;
}

void iRTelemetryReader::resize(int count) {
    count = std::max(count, 0);
    const qsizetype former = m_cars.size();
    m_cars.resize(count);
    ++m_recordsRevision;
    m_carListRevision = 0;
    for (qsizetype i = former; i < count; ++i) {
        m_cars[i].lap.expect(kFirstLapSamples + i * kFirstLapStagger);
        m_cars[i].nextLap.expect(kFirstLapSamples + i * kFirstLapStagger);
    }
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

Sample& iRTelemetryReader::sample(int car) {
    m_isSampleHandedOut = true;
    return m_cars[car].sample.handOut();
}

const Sample& iRTelemetryReader::sample(int car) const {
    return m_cars[car].sample;
}

std::optional<quint64> iRTelemetryReader::recordsRevision() const {
    return m_isSampleHandedOut ? std::nullopt : std::optional(m_recordsRevision);
}

bool iRTelemetryReader::hasOwnCarSlot() const {
    return m_myCarIdx >= 0 && m_myCarIdx < m_cars.size();
}

int iRTelemetryReader::ownSessionNumber() const {
    if (!hasOwnCarSlot()) {
        return -1;
    }
    return toInt(m_cars.at(m_myCarIdx).sample.value(u"sessionnum"_s).value);
}

void iRTelemetryReader::setYaml(const char* yaml) {
    TYamlTree::setYaml(yaml);
    settleFeed();
}

void iRTelemetryReader::settleFeed() {
    const TStringTree* const weekend = sub(u"WeekendInfo"_s);
    if (m_replay == Feed::Unknown && weekend != nullptr) {
        m_replay = weekend->value(u"SimMode"_s) == "replay"_L1 ? Feed::Replay : Feed::Live;
    }
}

QUuid iRTelemetryReader::sessionId(const QString& id) const {
    return reader::sessionId(id);
}

bool iRTelemetryReader::updateCarList() {
    m_digest.refresh(carCount());
    // Every name follows from the text, which rarely changes from one tick to the next.
    if (m_carListRevision == m_digest.revision() && !m_isSampleHandedOut) {
        return hasStatusChanged();
    }
    m_carListRevision = m_digest.revision();
    m_myCarIdx = m_digest.ownCar();
    bool isChanged = false;
    if (m_digest.hasDrivers()) {
        ++m_recordsRevision;
        for (int car = 0; car < carCount(); ++car) {
            isChanged = updateDriver(car) || isChanged;
        }
    }
    return isChanged || hasStatusChanged();
}

bool iRTelemetryReader::updateDriver(int index) {
    RecorderCar& car = m_cars[index];
    car.sample.setCarId(QString::number(index));
    car.detailedTelemetry = index == m_myCarIdx;
    car.sample.setDetailedTelemetry(car.detailedTelemetry);
    const std::optional<DriverEntry>& driver = m_digest.driver(index);
    if (!driver) {
        return false;
    }
    bool isChanged = assignIfChanged(car.driverName, driver->driverName);
    isChanged = assignIfChanged(car.teamName, driver->teamName) || isChanged;
    isChanged = assignIfChanged(car.carName, driver->carName) || isChanged;
    isChanged = assignIfChanged(car.className, driver->className) || isChanged;
    return isChanged;
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

void iRTelemetryReader::prepareTick() {
    for (RecorderCar& car : m_cars) {
        car.prepareTick();
    }
    m_lastSessionNum = m_sessionNum;
}

void iRTelemetryReader::getRawData(const irsdk_header* header, const irsdk_varHeader* vars,
                                   const char* data) {
    getRawData(header, vars, data, std::numeric_limits<qint64>::max());
}

void iRTelemetryReader::getRawData(const irsdk_header* header, const irsdk_varHeader* vars,
                                   const char* data, qint64 dataLength) {
    if (header == nullptr || data == nullptr) {
        return;
    }
    // A table without entries may have no address.
    const qsizetype numVars = vars == nullptr ? 0 : std::max(header->numVars, 0);
    if (m_varNames.isEmpty()) {
        fillVariableTable(vars, numVars);
    }
    resolveSamplingPlan(vars, std::min(numVars, m_varNames.size()), dataLength);

    const quint64 tick = m_plan.sessionTick(data);
    for (int car = 0; car < carCount(); ++car) {
        m_cars[car].sample.fill(m_plan, car, data, tick);
    }
    if (!m_diskLoading && !m_plan.includesSessionClock()) {
        distributeSessionClock();
    }
}

void iRTelemetryReader::fillVariableTable(const irsdk_varHeader* vars, qsizetype count) {
    for (qsizetype i = 0; i < count; ++i) {
        m_varNames.append(fixedWidthText(vars[i].name).toLower());
        m_varUnits.append(fixedWidthText(vars[i].unit));
    }
}

void iRTelemetryReader::resolveSamplingPlan(const irsdk_varHeader* vars, qsizetype count,
                                            qint64 dataLength) {
    const SamplingPlan::Mode mode{
        .diskLoading = m_diskLoading,
        .live = m_replay == Feed::Live,
        .ownCar = hasOwnCarSlot() ? m_myCarIdx : -1,
        .carCount = carCount(),
        // No snapshot is longer: the format states it in 32 bits.
        .dataLength = std::min<qint64>(dataLength, std::numeric_limits<qint32>::max())};
    if (!m_plan.matches(vars, count, mode)) {
        m_plan.resolve(vars, count, m_varNames, m_varUnits, mode);
    }
}

void iRTelemetryReader::distributeSessionClock() {
    if (!hasOwnCarSlot()) {
        return;
    }
    const Sample& own = m_cars.at(m_myCarIdx).sample;
    const Value time = own.value(u"sessiontime"_s);
    const Value timeRemain = own.value(u"sessiontimeremain"_s);
    const Value tick(QVariant::fromValue<quint64>(toULongLong(own.value(u"sessiontick"_s).value)),
                     QString());
    for (int car = 0; car < carCount(); ++car) {
        if (car != m_myCarIdx) {
            m_cars[car].sample.set(u"sessiontime"_s, time);
            m_cars[car].sample.set(u"sessiontimeremain"_s, timeRemain);
            m_cars[car].sample.set(u"sessiontick"_s, tick);
        }
    }
}

void iRTelemetryReader::processData() {
    m_digest.refresh(carCount());
    const int sessionNumber = ownSessionNumber();
    const TickContext tick{.feed = m_replay,
                           .ownCar = m_myCarIdx,
                           .sessionNumber = sessionNumber,
                           .isNewSession = isSessionRestarted(),
                           .trackKilometres = m_digest.trackKilometres(),
                           .session = m_digest.session(sessionNumber)};
    for (int car = 0; car < carCount(); ++car) {
        const LapOutcome outcome = processCar(m_cars[car], car, tick);
        if (outcome == LapOutcome::Completed || outcome == LapOutcome::Aborted) {
            endLap(car, outcome == LapOutcome::Completed);
        } else if (outcome == LapOutcome::Discarded) {
            m_debugLines.append(u"Replay lap aborted"_s);
        }
    }
    writeDebugLines(takeDebugLines());
}

void iRTelemetryReader::getSessionInfo(int carIdx, Lap* lap) {
    m_digest.refresh(carCount());
    const LapFacts& facts = m_digest.lapFacts(
        carIdx, hasOwnCarSlot() ? std::optional(ownSessionNumber()) : std::nullopt);
    lap->setCarId(QString::number(carIdx));
    facts.addTo(*lap);
    if (facts.weekend) {
        m_sessionNum = facts.weekend->sessionNumber;
    }
}

void iRTelemetryReader::preprocessLap(int car) {
    deriveChannels(car, m_cars[car].lap.takeCourse());
    writeDebugLines(takeDebugLines());
}

void iRTelemetryReader::deriveChannels(int car, LapCourse course) {
    m_debugLines +=
        reader::deriveChannels(*m_cars[car].lap, std::move(course), car == m_myCarIdx, m_replay);
}

void iRTelemetryReader::processLap(int index, bool completed) {
    endLap(index, completed);
    writeDebugLines(takeDebugLines());
}

void iRTelemetryReader::endLap(int index, bool completed) {
    RecorderCar& car = m_cars[index];
    car.closeLap();
    if (car.lap.isEmpty()) {
        return;
    }
    LapCourse course = car.lap.takeCourse();
    describeLap(car, completed, m_diskLoading);
    getSessionInfo(index, car.lap.get());
    cleanupLap(index);
    deriveChannels(index, std::move(course));
    normalizeChannelBeginning(index, u"lapcurrentlaptime"_s);
    normalizeChannelBeginning(index, u"energybatterytomgu_klap"_s);
    normalizeChannelBeginning(index, u"energymgu_klapdeploypct"_s);
}

void iRTelemetryReader::normalizeChannelBeginning(int car, const QString& name) {
    repairBeginning(*m_cars[car].lap, name);
}

void iRTelemetryReader::cleanupLap(int car) {
    if (m_replay == Feed::Replay) {
        m_cars[car].lap->removeChannel(u"lapcurrentlaptime"_s);
    }
}

QStringList iRTelemetryReader::closeOpenLaps() {
    for (int car = 0; car < carCount(); ++car) {
        // The last tick's laps are the host's: one of its threads may be writing them to disk.
        m_cars[car].leaveReadyLap();
        endLap(car, false);
    }
    return takeDebugLines();
}

QStringList iRTelemetryReader::takeDebugLines() {
    return std::exchange(m_debugLines, {});
}

bool iRTelemetryReader::isLapReady(int car) const {
    return m_cars[car].lapReady;
}

QSharedPointer<Lap> iRTelemetryReader::lap(int car) const {
    return m_cars[car].lap;
}

bool iRTelemetryReader::isCarInWorld(int car) const {
    return static_cast<double>(m_cars[car].current.lapDistPct) > kInWorldLapDistance;
}

bool iRTelemetryReader::isMyLapReady() const {
    return hasOwnCarSlot() && isLapReady(m_myCarIdx);
}

QSharedPointer<Lap> iRTelemetryReader::myLap() const {
    return hasOwnCarSlot() ? lap(m_myCarIdx) : QSharedPointer<Lap>();
}

void iRTelemetryReader::processMyLap(bool completed) {
    if (hasOwnCarSlot()) {
        processLap(m_myCarIdx, completed);
    }
}

}  // namespace reader
