#pragma once

#include <cstdint>

namespace bench {

/**
 * How often this thread has taken memory since it began, by whatever way: the program's own
 * malloc family stands before the C library's, and the shared libraries' calls end there too.
 */
[[nodiscard]] std::uint64_t allocationCount();

/**
 * Has memory that was freed stay with the program, as it does in a program that has recorded laps
 * for a while: the pages of the next laps are there already.
 */
void keepFreedMemory();

/** Gives freed memory back to the system, so that what follows begins as a new program does. */
void giveBackFreedMemory();

/**
 * Has the allocator join what was freed piece by piece, which else falls to whoever asks for a
 * large piece next, in the middle of its measured time.
 */
void settleFreedMemory();

/** The allocations of a stretch of work. */
class AllocationMeter {
public:
    AllocationMeter() : m_start(allocationCount()) {}
    [[nodiscard]] std::uint64_t count() const { return allocationCount() - m_start; }

private:
    std::uint64_t m_start;
};

}  // namespace bench
