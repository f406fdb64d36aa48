#include "sdk/liveplugininfo.h"

#include <new>

namespace TLM::SDK {

QDataStream& operator<<(QDataStream& stream, const LivePluginInfo& info) {
    stream << info.sourceName() << info.pluginName() << static_cast<qint32>(info.cars.size());
    for (const CarInfo& car : info.cars) {
        stream << car;
    }
    return stream;
}

QDataStream& operator>>(QDataStream& stream, LivePluginInfo& info) {
    QString sourceName;
    QString pluginName;
    stream >> sourceName >> pluginName;
    info.setSourceName(sourceName);
    info.setPluginName(pluginName);
    info.cars.clear();
    qint32 count = 0;
    stream >> count;
    CarInfo car;
    try {
        for (qint32 i = 0; i < count; ++i) {
            stream >> car;
            info.cars.append(car);
        }
    } catch (const std::bad_alloc&) {
        // More cars than there is memory for.
        info.cars.clear();
        stream.setStatus(QDataStream::ReadCorruptData);
    }
    return stream;
}

}  // namespace TLM::SDK
