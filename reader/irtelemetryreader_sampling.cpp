#include "reader/irtelemetryreader.h"
#include "reader/numbers.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <limits>

using namespace Qt::StringLiterals;
using TLM::SDK::Sample;
using TLM::SDK::Value;

namespace {

template <std::size_t Size>
QString fixedWidthText(const char (&text)[Size]) {
    const char* const end = std::find(std::begin(text), std::end(text), '\0');
    return QString::fromUtf8(text, end - std::begin(text));
}

}  // namespace

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
    for (qsizetype i = 0; i < m_cars.size(); ++i) {
        RecorderCar& car = m_cars[i];
        if (car.sampleHandedOut) {
            ++car.sampleRevision;
        }
        m_generations[static_cast<std::size_t>(i)].write(car.sample, m_plan, static_cast<int>(i),
                                                         car.sampleRevision, data, tick);
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
    const SamplingPlan::Mode mode{.diskLoading = m_diskLoading,
                                  .live = isLive(),
                                  .ownCar = hasOwnCarSlot() ? m_myCarIdx : -1,
                                  .carCount = static_cast<int>(m_cars.size()),
                                  .dataLength = dataLength};
    if (!m_plan.matches(vars, count, mode)) {
        m_plan.resolve(vars, count, m_varNames, m_varUnits, mode);
    }
}

void iRTelemetryReader::distributeSessionClock() {
    if (!hasOwnCarSlot()) {
        return;
    }
    const Sample& own = m_cars.at(m_myCarIdx).sample;
    const Value sessionTime = own.value(u"sessiontime"_s);
    const Value sessionTimeRemain = own.value(u"sessiontimeremain"_s);
    const Value sessionTick(
        QVariant::fromValue<quint64>(reader::toULongLong(own.value(u"sessiontick"_s).value)),
        QString());
    for (qsizetype car = 0; car < m_cars.size(); ++car) {
        if (car != m_myCarIdx) {
            Sample& sample = m_cars[car].sample;
            ++m_cars[car].sampleRevision;
            sample.setValue(u"sessiontime"_s, sessionTime);
            sample.setValue(u"sessiontimeremain"_s, sessionTimeRemain);
            sample.setValue(u"sessiontick"_s, sessionTick);
        }
    }
}
