#include "sdk/dynamicdata.h"

namespace TLM::SDK {

void DynamicData::setValue(const QString& name, const QVariant& value, const QString& unit) {
    setValue(name, Value(value, unit));
}

}  // namespace TLM::SDK
