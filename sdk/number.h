#pragma once

#include <QMetaType>
#include <QVariant>

namespace TLM::SDK {

/**
 * The same number as QVariant::toDouble(), which dispatches through the meta-type system at ten
 * times the price: this runs for every value of every car in every tick.
 */
[[nodiscard]] inline double toNumber(QVariant const& variant) {
    // constData() and typeId() ask the same of the same parts, by calls into Qt's library, which
    // are a sixth of what a value costs to record.
    QVariant::DataPtr const& content = variant.data_ptr();
    const void* const stored = content.storage();
    switch (content.type().id()) {
        case QMetaType::Double:
            return *static_cast<double const*>(stored);
        case QMetaType::Float:
            return static_cast<double>(*static_cast<float const*>(stored));
        case QMetaType::Int:
            return static_cast<double>(*static_cast<int const*>(stored));
        case QMetaType::UInt:
            return static_cast<double>(*static_cast<uint const*>(stored));
        case QMetaType::LongLong:
            return static_cast<double>(*static_cast<qlonglong const*>(stored));
        case QMetaType::ULongLong:
            return static_cast<double>(*static_cast<qulonglong const*>(stored));
        case QMetaType::Bool:
            return *static_cast<bool const*>(stored) ? 1.0 : 0.0;
        default:
            return variant.toDouble();
    }
}

}  // namespace TLM::SDK
