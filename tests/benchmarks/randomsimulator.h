#pragma once

#include "irsdk/layout.h"

#include <random>
#include <string>
#include <vector>

namespace fastpath {

/**
 * Snapshots of random bytes under a variable table that changes like no simulator's should: types
 * become others or unknown ones, variables move, leave the snapshot, go away and are appended.
 */
class RandomSimulator {
public:
    explicit RandomSimulator(unsigned int seed);

    [[nodiscard]] irsdk_header header() const;
    [[nodiscard]] const std::vector<irsdk_varHeader>& table() const { return m_table; }
    [[nodiscard]] const std::vector<char>& snapshot() const { return m_snapshot; }

    /** New bytes in some places of the snapshot. */
    void advance();

    /** Something about the table becomes different. */
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
