#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace simulator {

/** `value` with exactly `digits` digits after the point, whatever the locale. */
std::string fixedText(double value, int digits);

/** The shortest text that reads back as the same 32-bit float. */
std::string shortestText(float value);

/** Reads all of `text` as a whole number; false (and `value` untouched) when it is none. */
bool readWhole(std::string_view text, long long& value);

/** Reads all of `text` as a finite number; false (and `value` untouched) when it is none. */
bool readNumber(std::string_view text, double& value);

/**
 * Takes the first line out of `text`, without its end. An unfinished line counts as one only when
 * `isWhole` says that nothing follows.
 */
std::optional<std::string> takeLine(std::string& text, bool isWhole);

/** `text` without blanks, tabs and carriage returns at both ends. */
std::string_view trimmed(std::string_view text);

}  // namespace simulator
