#pragma once

#include <QString>
#include <QVariant>

namespace TLM::SDK {

/**
 * One measured or descriptive quantity with its unit. A value that was never set holds an invalid
 * QVariant and no unit; asking it for text gives an empty text.
 */
class Value {
public:
    Value() = default;
    Value(const QVariant& value, const QString& unit);

    /** The unit's text as the producer names it, for instance "km/h"; empty when there is none. */
    QString unit() const { return m_unit; }
    void setUnit(const QString& unit) { m_unit = unit; }

    /** The quantity as text, followed by one blank and the unit when there is a unit. */
    QString print() const;

    /** The quantity: a number, a text, a bool, whatever the producer stored. */
    QVariant value;

private:
    friend struct RecordLayout;  // holds the layout to what hosts are built against

    QString m_unit;
};

}  // namespace TLM::SDK
