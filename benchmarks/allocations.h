#pragma once

#include <cstdint>

namespace bench {

/**
 * The number of allocations of this thread since it began, those of shared libraries included: the
 * program's own malloc family replaces that of the C library.
 */
[[nodiscard]] std::uint64_t allocationCount();

/**
 * Keeps freed memory in the program, as in one that has recorded laps for a while: the pages of the
 * next laps are mapped already.
 */
void keepFreedMemory();

/** Returns freed memory to the system, so that the next measurement starts like a new program. */
void giveBackFreedMemory();

/**
 * Has the allocator merge freed chunks now. Otherwise the next large allocation would do that,
 * within its measured time.
 */
void mergeFreedMemory();

/** Counts the allocations since it was created. */
class AllocationMeter {
public:
    AllocationMeter() : m_start(allocationCount()) {}
    [[nodiscard]] std::uint64_t count() const { return allocationCount() - m_start; }

private:
    std::uint64_t m_start;
};

}  // namespace bench
