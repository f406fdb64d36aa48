#pragma once

#include <cstddef>
#include <cstdint>

namespace testsupport {

/**
 * Fills a snapshot with words that are all computed from its tick count, so that any copy that
 * mixes two ticks can be detected. `length` is a multiple of 4.
 */
void fillChecked(char* snapshot, std::size_t length, std::int32_t tickCount);

/** Whether all words of a snapshot belong to the same tick. */
[[nodiscard]] bool isUntorn(const char* snapshot, std::size_t length);

/** The tick count that a checked snapshot was filled for. */
[[nodiscard]] std::int32_t checkedTick(const char* snapshot);

}  // namespace testsupport
