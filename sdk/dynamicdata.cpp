#include "sdk/dynamicdata.h"

namespace TLM::SDK {

void DynamicData::setValue(QString const& name, QVariant const& value, QString const& unit) {
    setValue(name, Value(value, unit));
}

}  // namespace TLM::SDK
