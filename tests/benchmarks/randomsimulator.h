#pragma once

#include "irsdk/layout.h"

#include <random>
#include <string>
#include <vector>

namespace fastpath {

/**
 * Snapshots of random bytes with a variable table that changes as no simulator's should: variables
 * change to other or unknown types, move, leave the snapshot, disappear and are appended.
 */
class RandomSimulator {
public:
    explicit RandomSimulator(unsigned int seed);

    [[nodiscard]] irsdk_header header() const;
    [[nodiscard]] const std::vector<irsdk_varHeader>& table() const { return m_table; }
    [[nodiscard]] const std::vector<char>& snapshot() const { return m_snapshot; }

    /** Changes some bytes of the snapshot. */
    void advance();

    void changeTable();

    /** A number from 0 to `count` - 1. */
    int number(int count);

private:
    void addVariable(const std::string& name, std::int32_t type, int count);

    std::mt19937 m_random;
    std::vector<irsdk_varHeader> m_table;
    std::vector<char> m_snapshot;
};

}  // namespace fastpath
