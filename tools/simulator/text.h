#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace simulator {

/** `value` with exactly `digits` digits after the point, in every locale. */
std::string fixedText(double value, int digits);

/** The shortest text that reads back as the same float. */
std::string shortestText(float value);

/** Reads all of `text` as a whole number. On failure returns false and keeps `value`. */
bool readInteger(std::string_view text, long long& value);

/** Reads all of `text` as a finite number. On failure returns false and keeps `value`. */
bool readNumber(std::string_view text, double& value);

/**
 * Removes the first line from `text` and returns it without its end. A line without an end counts
 * only when `isWhole` says that nothing follows.
 */
std::optional<std::string> takeLine(std::string& text, bool isWhole);

/** `text` without blanks, tabs and carriage returns at both ends. */
std::string_view trimmed(std::string_view text);

}  // namespace simulator
