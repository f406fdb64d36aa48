#pragma once

#include "reader/irtelemetryreader.h"
#include "sdk/sample.h"

#include <QList>

#include <array>
#include <cstddef>

/**
 * The lists in which the samples of a tick go to the host, used again and again.
 *
 * A list that the host keeps is never touched: the next tick takes another one, or a new one when
 * the host keeps them all. A list that it has let go of gives its values back first, because as
 * long as they stand in any list the reader cannot write to them.
 */
class SampleLists {
public:
    /** A list of the reader's samples that nobody else holds, good until the next call. */
    const QList<TLM::SDK::Sample>& fill(const iRTelemetryReader& reader);

    /** Takes the values out of the lists that nobody else holds. */
    void release();

private:
    struct Entry {
        QList<TLM::SDK::Sample> samples;
        quint64 recordsRevision = 0;  // of the car records in it
        bool hasValues = false;
    };

    [[nodiscard]] Entry* findFree();
    [[nodiscard]] static bool hasRecordsOf(const Entry& entry, const iRTelemetryReader& reader);
    static void refill(Entry& entry, const iRTelemetryReader& reader);
    static void fillAnew(Entry& entry, const iRTelemetryReader& reader);

    // As many as the generations of values behind them.
    static constexpr std::size_t listCount = 4;

    std::array<Entry, listCount> m_lists;
    std::size_t m_oldest = 0;
};
