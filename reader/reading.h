#pragma once

#include <QVariant>

#include <cstring>

/** How a value is read from a snapshot and what a QVariant holds of it. */
enum class Reading {
    CharAsInt,  // one signed byte, held as int
    Bool,       // one byte, 0 is false
    Int,
    Float,
    Double,
    Tick,  // the session tick of the own car, held as quint64
    None,  // nothing to read: a null QVariant
};

/** A QVariant of the type that holds such a reading. */
[[nodiscard]] inline QVariant emptyValue(Reading reading) {
    switch (reading) {
        case Reading::CharAsInt:
        case Reading::Int:
            return QVariant::fromValue<int>(0);
        case Reading::Bool:
            return QVariant::fromValue<bool>(false);
        case Reading::Float:
            return QVariant::fromValue<float>(0.0F);
        case Reading::Double:
            return QVariant::fromValue<double>(0.0);
        case Reading::Tick:
            return QVariant::fromValue<quint64>(0);
        case Reading::None:
            break;
    }
    return {};
}

/** A number of the snapshot at `bytes`, which need not be aligned. */
template <typename Number>
[[nodiscard]] Number loadNumber(const char* bytes) {
    Number number;
    std::memcpy(&number, bytes, sizeof number);
    return number;
}
