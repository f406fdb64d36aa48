#include "benchmarks/obvious/plugin.h"

#include "irsdk/irsdk.h"

#include <cstring>
#include <memory>

namespace obvious {

using TLM::SDK::CarInfo;
using TLM::SDK::Lap;
using TLM::SDK::Sample;

namespace {

constexpr int kCarCount = 64;
constexpr int kTickWaitMs = 20;
constexpr int kConnectWaitMs = 200;

}  // namespace

Plugin::Plugin() {
    m_pluginInfo.cars.resize(kCarCount);
}

bool Plugin::connectToSource() {
    if (!irsdk_startup()) {
        return false;
    }
    m_dataBuffer.resize(static_cast<std::size_t>(irsdk_getHeader()->bufferLength));
    if (!irsdk_waitForDataReady(kConnectWaitMs, m_dataBuffer.data())) {
        return false;
    }
    m_reader.setYaml(irsdk_getSessionInfoStr());
    updateCarList();
    return true;
}

void Plugin::updateCarList() {
    if (!m_reader.updateCarList()) {
        return;
    }
    for (int i = 0; i < m_pluginInfo.cars.size(); ++i) {
        const RecorderCar& car = m_reader.recorderCar(i);
        CarInfo& info = m_pluginInfo.cars[i];
        info.setDriverName(car.driverName);
        info.setTeamName(car.teamName);
        info.setClassName(car.className);
        info.setCarName(car.carName);
        info.setStatus(car.current.status);
        info.setDetailedTelemetry(car.detailedTelemetry);
    }
    emit m_emitter.sendCarListChanged(m_pluginInfo);
}

bool Plugin::tick() {
    if (!irsdk_waitForDataReady(kTickWaitMs, m_dataBuffer.data())) {
        return false;
    }
    const irsdk_header* header = irsdk_getHeader();
    const std::unique_ptr<char[]> copy(new char[m_dataBuffer.size()]);
    std::memcpy(copy.get(), m_dataBuffer.data(), m_dataBuffer.size());
    if (header->sessionInfoUpdate != m_lastSessionInfoUpdate) {
        m_lastSessionInfoUpdate = header->sessionInfoUpdate;
        m_reader.setYaml(irsdk_getSessionInfoStr());
    }
    updateCarList();
    const irsdk_varHeader* vars = irsdk_getVarHeaderEntry(0);
    m_reader.prepareTick();
    m_reader.getRawData(header, vars, copy.get(), static_cast<qint64>(m_dataBuffer.size()));
    m_reader.processData();
    deliver();
    return true;
}

void Plugin::deliver() {
    QList<Sample> samples;
    samples.reserve(kCarCount);
    for (int car = 0; car < kCarCount; ++car) {
        samples.append(m_reader.sample(car));
        if (m_reader.isLapReady(car)) {
            const QSharedPointer<Lap> lap = m_reader.lap(car);
            lap->setPlugin(QStringLiteral("iR Plugin"));
            lap->setSource(QStringLiteral("iRacing"));
            emit m_emitter.sendTelemetryLap(lap);
        }
    }
    emit m_emitter.sendSamples(samples);
}

}  // namespace obvious
