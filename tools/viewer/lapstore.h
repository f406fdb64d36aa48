#pragma once

#include "sdk/lap.h"

#include <QList>
#include <QSharedPointer>

#include <optional>

namespace rataip::viewer {

/**
 * Keeps finished laps, oldest first, within a limit on their readings: 64 cars produce about a
 * hundred megabytes in every lap. Beyond the limit the oldest laps of other cars are released
 * first, then the own car's. The newest lap always stays.
 */
class LapStore {
public:
    using LapPointer = QSharedPointer<TLM::SDK::Lap>;

    /** 64 million doubles are 512 MB: a hundred laps of the own car and hundreds of the others'. */
    static constexpr qsizetype kDefaultLimit = qsizetype{64} << 20;

    explicit LapStore(qsizetype maxReadings = kDefaultLimit) : m_maxReadings(maxReadings) {}

    void add(const LapPointer& lap);

    /** The index in laps() of the lap to release next. No value while within the limit. */
    [[nodiscard]] std::optional<qsizetype> surplus() const;
    void release(qsizetype index);

    [[nodiscard]] const QList<LapPointer>& laps() const { return m_laps; }
    [[nodiscard]] qsizetype released() const { return m_released; }

private:
    QList<LapPointer> m_laps;
    qsizetype m_maxReadings;
    qsizetype m_readings = 0;
    qsizetype m_released = 0;
};

}  // namespace rataip::viewer
