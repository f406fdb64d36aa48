#pragma once

#include <cstddef>
#include <cstdint>

namespace testsupport {

/**
 * Fills a snapshot with words that all follow from its tick count, so that a copy that mixes two
 * ticks gives itself away whichever words it mixes. `length` is a multiple of 4.
 */
void fillChecked(char* snapshot, std::size_t length, std::int32_t tickCount);

/** Whether every word of a snapshot belongs to one and the same tick. */
[[nodiscard]] bool isUntorn(const char* snapshot, std::size_t length);

/** The tick count that a checked snapshot was filled for. */
[[nodiscard]] std::int32_t checkedTick(const char* snapshot);

}  // namespace testsupport
