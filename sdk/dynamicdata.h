#pragma once

#include "sdk/value.h"

#include <QMap>
#include <QString>
#include <QStringList>
#include <QVariant>

namespace TLM::SDK {

/**
 * Named values, ordered by name (case-sensitive, by UTF-16 code units). A name that is not there is
 * an ordinary answer: it reads as a default Value, and removing it does nothing.
 *
 * Copies share the values until one of them writes.
 */
class DynamicData {
public:
    using ValueMap = QMap<QString, Value>;

    bool containsValue(const QString& name) const { return m_values.contains(name); }

    /** The value stored under `name`, or a default Value when there is none. */
    Value value(const QString& name) const { return m_values.value(name); }

    /** Stores `value` under `name`, replacing what was there. */
    void setValue(const QString& name, const Value& value) { m_values.insert(name, value); }
    void setValue(const QString& name, const QVariant& value, const QString& unit);

    void removeValue(const QString& name) { m_values.remove(name); }
    void removeValues() { m_values.clear(); }
    void clear() { m_values.clear(); }

    /** True when there is no value at all. */
    bool isEmpty() const { return m_values.isEmpty(); }

    /** All names in ascending order. */
    QStringList valueNameList() const { return m_values.keys(); }

    /**
     * The map itself, for those who walk it or write into entries that exist: producers that fill
     * hundreds of values a tick cannot afford a look-up by name for each. Iterating the non-const
     * map takes a copy of a shared one first.
     */
    const ValueMap& data() const { return m_values; }
    ValueMap& data() { return m_values; }

private:
    ValueMap m_values;
};

}  // namespace TLM::SDK
