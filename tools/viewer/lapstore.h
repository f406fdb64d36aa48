#pragma once

#include "sdk/lap.h"

#include <QList>
#include <QSharedPointer>

#include <optional>

namespace rataip::viewer {

/**
 * The finished laps that are kept, oldest first, within a limit of readings: a field of 64 cars
 * drives a hundred megabytes in every lap. When the limit is passed, the oldest laps of other cars
 * go first, then the own car's; the newest lap always stays.
 */
class LapStore {
public:
    using LapPointer = QSharedPointer<TLM::SDK::Lap>;

    /** 64 million doubles are 512 MB: a hundred laps of the own car and hundreds of the others'. */
    static constexpr qsizetype usualLimit = qsizetype{64} << 20;

    explicit LapStore(qsizetype mostReadings = usualLimit) : m_mostReadings(mostReadings) {}

    void add(const LapPointer& lap);

    /** The lap that has to go now, as its index in laps(), if any. */
    [[nodiscard]] std::optional<qsizetype> surplus() const;
    void release(qsizetype index);

    [[nodiscard]] const QList<LapPointer>& laps() const { return m_laps; }
    [[nodiscard]] qsizetype released() const { return m_released; }

private:
    QList<LapPointer> m_laps;
    qsizetype m_mostReadings;
    qsizetype m_readings = 0;
    qsizetype m_released = 0;
};

}  // namespace rataip::viewer
