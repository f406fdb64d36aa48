#pragma once

#include <QVariant>

#include <cmath>
#include <limits>

/**
 * Conversions of readings to the recorder's integers that are defined for every reading. Qt rounds
 * a real number by a cast, which is undefined for NaN and for what the integer cannot hold; the
 * simulator's memory may hold either.
 */
namespace reader {

/** `number` rounded, the nearest int when no int can hold it, 0 for NaN. */
[[nodiscard]] inline int toInt(double number) {
    using Limits = std::numeric_limits<int>;
    if (number >= static_cast<double>(Limits::max())) {
        return Limits::max();
    }
    if (number <= static_cast<double>(Limits::min())) {
        return Limits::min();
    }
    return number == number ? qRound(number) : 0;
}

/**
 * `number` rounded, the largest number when it is too large, 0 for NaN. A negative number wraps
 * around as Qt's conversion has it, down to the smallest signed one; below there is 0.
 */
[[nodiscard]] inline quint64 toULongLong(double number) {
    constexpr double kSignedRange = 9223372036854775808.0;
    if (number >= 2.0 * kSignedRange) {
        return std::numeric_limits<quint64>::max();
    }
    if (number >= kSignedRange) {
        return static_cast<quint64>(number);
    }
    return number >= -kSignedRange ? static_cast<quint64>(qRound64(number)) : 0;
}

[[nodiscard]] inline bool isReal(const QVariant& value) {
    const int type = value.typeId();
    return type == QMetaType::Float || type == QMetaType::Double;
}

/** QVariant::toInt, saturated; 0 for what is no number. */
[[nodiscard]] inline int toInt(const QVariant& value) {
    return isReal(value) ? toInt(value.toDouble()) : value.toInt();
}

/** QVariant::toULongLong, saturated; 0 for what is no number. */
[[nodiscard]] inline quint64 toULongLong(const QVariant& value) {
    return isReal(value) ? toULongLong(value.toDouble()) : value.toULongLong();
}

/** `counter` + 1; the largest int stays as it is. */
[[nodiscard]] constexpr int incrementSaturated(int counter) {
    return counter == std::numeric_limits<int>::max() ? counter : counter + 1;
}

/** Whether a fuel density, in kilograms a litre, is neither zero nor NaN. */
[[nodiscard]] inline bool isDensity(double density) {
    constexpr double kZeroDensity = 1e-12;
    return std::fabs(density) > kZeroDensity;
}

/** Whether a lap time, in seconds, is zero. */
[[nodiscard]] inline bool isZeroLapTime(float seconds) {
    constexpr float kZeroLapTimeSeconds = 1e-5F;
    return std::fabs(seconds) <= kZeroLapTimeSeconds;
}

}  // namespace reader
