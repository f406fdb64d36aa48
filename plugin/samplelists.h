#pragma once

#include "reader/irtelemetryreader.h"
#include "sdk/sample.h"

#include <QList>

#include <array>
#include <cstddef>

/**
 * The lists in which the samples of a tick go to the host. They are reused.
 *
 * A list that the host keeps is never changed: the next tick uses another one, or a new one when
 * the host keeps them all. A list that the host has released is emptied of its values first,
 * because the reader cannot write to values that any list shares.
 */
class SampleLists {
public:
    /** A list of the reader's samples that the host does not hold, valid until the next call. */
    const QList<TLM::SDK::Sample>& fill(const iRTelemetryReader& reader);

    /** Removes the values from the lists that the host does not hold. */
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

    // As many as a car's sample has generations of values.
    static constexpr std::size_t kListCount = 4;

    std::array<Entry, kListCount> m_lists;
    std::size_t m_oldest = 0;
};
