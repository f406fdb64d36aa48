#include "sdk/value.h"

#include <QStringBuilder>

namespace TLM::SDK {

Value::Value(const QVariant& initialValue, const QString& unit)
    : value(initialValue), m_unit(unit) {}

QString Value::print() const {
    QString quantity = value.toString();
    if (m_unit.isEmpty()) {
        return quantity;
    }
    return quantity % QLatin1Char(' ') % m_unit;
}

}  // namespace TLM::SDK
