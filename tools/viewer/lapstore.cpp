#include "tools/viewer/lapstore.h"

#include <algorithm>

namespace rataip::viewer {

using TLM::SDK::Lap;

namespace {

qsizetype readingsOf(const Lap& lap) {
    qsizetype readings = 0;
    for (const auto& channel : lap.channels()) {
        readings += channel->samples.size();
    }
    const QStringList calculated = lap.getAvailableCalculatedChannels();
    for (const QString& name : calculated) {
        readings += lap.calculatedChannel(name)->samples.size();
    }
    return readings;
}

}  // namespace

void LapStore::add(const LapPointer& lap) {
    m_laps.append(lap);
    m_readings += readingsOf(*lap);
}

std::optional<qsizetype> LapStore::surplus() const {
    if (m_readings <= m_maxReadings || m_laps.size() <= 1) {
        return std::nullopt;
    }
    const auto newest = m_laps.cend() - 1;
    const auto other = std::find_if(
        m_laps.cbegin(), newest, [](const LapPointer& lap) { return !lap->detailedTelemetry(); });
    return other == newest ? 0 : other - m_laps.cbegin();
}

void LapStore::release(qsizetype index) {
    m_readings -= readingsOf(*m_laps.at(index));
    m_laps.removeAt(index);
    ++m_released;
}

}  // namespace rataip::viewer
