#pragma once

#include "tests/torture/table.h"

#include <chrono>

namespace torture {

/** Copies that were taken from a ring, and those of them that mixed two snapshots. */
struct CopyCount {
    long long copies = 0;
    long long torn = 0;

    CopyCount& operator+=(const CopyCount& other) {
        copies += other.copies;
        torn += other.torn;
        return *this;
    }
};

/**
 * Copies snapshots through the link, as fast as possible, while another process overwrites the ring
 * without pause. A careless reader, which does not check the tick count again, does the same: if it
 * gets no torn copy, the run proves nothing.
 */
class CopyTest {
public:
    /** Runs until `wanted` copies are made, and for some seconds of other copies. */
    void run(long long wanted);

    void addTo(Table& table, long long wanted) const;

private:
    CopyCount m_link;       // of checked snapshots, rings of three, two and one buffer
    CopyCount m_simulator;  // of the stand-in simulator's, by their checksum
    CopyCount m_careless;
    double m_seconds = 0.0;
};

}  // namespace torture
