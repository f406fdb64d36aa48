#include "tests/benchmarks/randomsimulator.h"

#include <array>
#include <cstring>

namespace fastpath {

namespace {

constexpr int kSnapshotLength = 4096;
constexpr int kCarCount = 64;

// The six types and two unknown ones.
constexpr std::array<std::int32_t, 8> kTypes{irsdk_char,  irsdk_bool,   irsdk_int, irsdk_bitField,
                                             irsdk_float, irsdk_double, 6,         -1};

}  // namespace

RandomSimulator::RandomSimulator(unsigned int seed) : m_random(seed), m_snapshot(kSnapshotLength) {
    addVariable("SessionTime", irsdk_double, 1);
    addVariable("SessionTimeRemain", irsdk_double, 1);
    addVariable("SessionTick", irsdk_int, 1);
    addVariable("Lap", irsdk_int, 1);
    addVariable("CarIdxLap", irsdk_int, kCarCount);
    addVariable("LapDistPct", irsdk_float, 1);
    addVariable("CarIdxLapDistPct", irsdk_float, kCarCount);
    addVariable("carIdxGear", irsdk_int, kCarCount + 5);
    addVariable("CarIdxFew", irsdk_bool, 7);
    addVariable("CarIdx", irsdk_double, kCarCount);
    addVariable("Text", irsdk_char, 20);
    addVariable("Unknown", 9, 3);
    addVariable("CarIdxUnknown", 7, kCarCount);
    addVariable("None", irsdk_int, 0);
    addVariable("Speed", irsdk_float, 6);
    addVariable("Flags", irsdk_bitField, 1);
    addVariable("speed", irsdk_double, 1);
    for (char& byte : m_snapshot) {
        byte = static_cast<char>(number(256));
    }
}

int RandomSimulator::number(int count) {
    return std::uniform_int_distribution(0, count - 1)(m_random);
}

void RandomSimulator::addVariable(const std::string& name, std::int32_t type, int count) {
    irsdk_varHeader entry{};
    entry.type = type;
    entry.offset = number(kSnapshotLength - 1024);
    entry.count = count;
    std::memcpy(entry.name, name.data(), name.size());
    std::memcpy(entry.unit, "u", 1);
    entry.unit[1] = static_cast<char>('a' + number(3));
    m_table.push_back(entry);
}

irsdk_header RandomSimulator::header() const {
    irsdk_header result{};
    result.numVars = static_cast<std::int32_t>(m_table.size());
    result.bufferLength = kSnapshotLength;
    return result;
}

void RandomSimulator::advance() {
    constexpr int kChanges = 200;
    for (int i = 0; i < kChanges; ++i) {
        m_snapshot[static_cast<std::size_t>(number(kSnapshotLength))] =
            static_cast<char>(number(256));
    }
}

void RandomSimulator::changeTable() {
    irsdk_varHeader& entry =
        m_table[static_cast<std::size_t>(number(static_cast<int>(m_table.size())))];
    switch (number(6)) {
        case 0:
            entry.type = kTypes[static_cast<std::size_t>(number(static_cast<int>(kTypes.size())))];
            break;
        case 1:
            entry.offset = number(kSnapshotLength + 100) - 50;
            break;
        case 2:
            entry.count = number(80);
            break;
        case 3:
            addVariable("Appended", irsdk_int, 1);
            break;
        case 4:
            m_table.pop_back();
            if (m_table.size() < 10) {
                addVariable("CarIdxAppended", irsdk_float, kCarCount);
            }
            break;
        default:
            std::swap(entry.type, m_table.front().type);
            std::swap(entry.offset, m_table.front().offset);
            break;
    }
}

}  // namespace fastpath
