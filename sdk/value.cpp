#include "sdk/value.h"

#include <QStringBuilder>

namespace TLM::SDK {

Value::Value(QVariant const& initialValue, QString const& unit)
    : value(initialValue), m_unit(unit) {}

QString Value::print() const {
    QString quantity = value.toString();
    if (m_unit.isEmpty()) {
        return quantity;
    }
    return quantity % QLatin1Char(' ') % m_unit;
}

}  // namespace TLM::SDK
