#include "plugin/samplelists.h"

#include "reader/unshared.h"

using TLM::SDK::Sample;

const QList<Sample>& SampleLists::fill(const iRTelemetryReader& reader) {
    release();
    Entry* entry = findFree();
    if (entry == nullptr) {
        entry = &m_lists[m_oldest];
        m_oldest = (m_oldest + 1) % kListCount;
        fillAnew(*entry, reader);
    } else if (hasRecordsOf(*entry, reader)) {
        refill(*entry, reader);
    } else {
        fillAnew(*entry, reader);
    }
    entry->hasValues = true;
    return entry->samples;
}

SampleLists::Entry* SampleLists::findFree() {
    for (Entry& entry : m_lists) {
        if (entry.samples.isEmpty() || reader::isUnshared(entry.samples)) {
            return &entry;
        }
    }
    return nullptr;
}

bool SampleLists::hasRecordsOf(const Entry& entry, const iRTelemetryReader& reader) {
    return entry.samples.size() == reader.carCount() && reader.recordsRevision() &&
           entry.recordsRevision == reader.recordsRevision();
}

/** Sets the values only: the car records are up to date. */
void SampleLists::refill(Entry& entry, const iRTelemetryReader& reader) {
    int car = 0;
    for (Sample& sample : entry.samples) {
        sample.data() = reader.sample(car).data();
        ++car;
    }
}

void SampleLists::fillAnew(Entry& entry, const iRTelemetryReader& reader) {
    QList<Sample> samples;
    samples.reserve(reader.carCount());
    for (int car = 0; car < reader.carCount(); ++car) {
        samples.append(reader.sample(car));
    }
    entry.samples = samples;
    entry.recordsRevision = reader.recordsRevision().value_or(0);
}

void SampleLists::release() {
    for (Entry& entry : m_lists) {
        if (entry.hasValues && reader::isUnshared(entry.samples)) {
            for (Sample& sample : entry.samples) {
                sample.data() = {};
            }
            entry.hasValues = false;
        }
    }
}
