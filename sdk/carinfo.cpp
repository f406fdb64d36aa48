#include "sdk/carinfo.h"

#include <QLatin1String>
#include <QMap>
#include <QVariant>

#include <new>

namespace TLM::SDK {

namespace {

using Record = QMap<QString, QVariant>;

// Keys on the wire, shared by writing and reading.
constexpr QLatin1String kCarId("carId");
constexpr QLatin1String kCarName("carName");
constexpr QLatin1String kDriverName("driverName");
constexpr QLatin1String kTeamName("teamName");
constexpr QLatin1String kTrackName("trackName");
constexpr QLatin1String kTrackConfig("trackConfig");
constexpr QLatin1String kSourceName("sourceName");
constexpr QLatin1String kDetailedTelemetry("detailedTelemetry");
constexpr QLatin1String kClassName("className");
constexpr QLatin1String kStatus("status");

// Damaged bytes can announce a nested list larger than any memory. Qt throws for it; the callers of
// a stream operator look at the stream's status and nowhere else.
Record readRecord(QDataStream& stream) {
    Record record;
    try {
        stream >> record;
    } catch (const std::bad_alloc&) {
        record.clear();
        stream.setStatus(QDataStream::ReadCorruptData);
    }
    return record;
}

}  // namespace

QDataStream& operator<<(QDataStream& stream, const CarInfo& car) {
    const Record record{
        {kCarId, car.carId()},           {kCarName, car.carName()},
        {kDriverName, car.driverName()}, {kTeamName, car.teamName()},
        {kTrackName, car.trackName()},   {kTrackConfig, car.trackConfig()},
        {kSourceName, car.source()},     {kDetailedTelemetry, car.detailedTelemetry()},
        {kClassName, car.className()},   {kStatus, static_cast<int>(car.status())},
    };
    return stream << record;
}

QDataStream& operator>>(QDataStream& stream, CarInfo& car) {
    const Record record = readRecord(stream);
    car.setCarId(record.value(kCarId).toString());
    car.setCarName(record.value(kCarName).toString());
    car.setDriverName(record.value(kDriverName).toString());
    car.setTeamName(record.value(kTeamName).toString());
    car.setTrackName(record.value(kTrackName).toString());
    car.setTrackConfig(record.value(kTrackConfig).toString());
    car.setSource(record.value(kSourceName).toString());
    car.setDetailedTelemetry(record.value(kDetailedTelemetry).toBool());
    car.setClassName(record.value(kClassName).toString());
    car.setStatus(static_cast<CarStatus>(record.value(kStatus).toInt()));
    return stream;
}

}  // namespace TLM::SDK
