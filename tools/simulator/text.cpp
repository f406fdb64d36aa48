#include "tools/simulator/text.h"

#include <array>
#include <charconv>
#include <cmath>
#include <utility>

namespace simulator {

namespace {

// Enough for the longest fixed text of a double (309 digits) and its decimals.
constexpr std::size_t kNumberRoom = 400;

template <typename Number>
bool readAll(std::string_view text, Number& value) {
    Number read{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), read);
    if (error != std::errc() || end != text.data() + text.size()) {
        return false;
    }
    value = read;
    return true;
}

}  // namespace

std::string fixedText(double value, int digits) {
    std::array<char, kNumberRoom> room{};
    const auto [end, error] = std::to_chars(room.data(), room.data() + room.size(), value,
                                            std::chars_format::fixed, digits);
    return error == std::errc() ? std::string(room.data(), end) : std::string("0");
}

std::string shortestText(float value) {
    std::array<char, kNumberRoom> room{};
    const auto [end, error] = std::to_chars(room.data(), room.data() + room.size(), value);
    return error == std::errc() ? std::string(room.data(), end) : std::string("0");
}

bool readInteger(std::string_view text, long long& value) {
    return readAll(text, value);
}

bool readNumber(std::string_view text, double& value) {
    double read = 0.0;
    if (!readAll(text, read) || !std::isfinite(read)) {
        return false;
    }
    value = read;
    return true;
}

std::optional<std::string> takeLine(std::string& text, bool isWhole) {
    const std::size_t end = text.find('\n');
    if (end == std::string::npos) {
        return isWhole && !text.empty() ? std::optional(std::exchange(text, {})) : std::nullopt;
    }
    std::string line = text.substr(0, end);
    text.erase(0, end + 1);
    return line;
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r";
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

}  // namespace simulator
