#include "tools/laps/displayunit.h"

namespace rataip::laps {

DisplayUnit displayUnit(const QString& unit) {
    constexpr double kilometresPerHour = 3.6;
    constexpr double degrees = 57.29577951308232;
    constexpr double percent = 100.0;
    if (unit == QLatin1String("m/s")) {
        return {kilometresPerHour, QStringLiteral("km/h")};
    }
    if (unit == QLatin1String("rad")) {
        return {degrees, QStringLiteral("°")};
    }
    if (unit == QLatin1String("%") || unit == QLatin1String("pu")) {
        return {percent, QStringLiteral("%")};
    }
    return {1.0, unit};
}

QString labelWithUnit(const QString& name, const QString& unit) {
    return unit.isEmpty() ? name : QStringLiteral("%1 (%2)").arg(name, unit);
}

}  // namespace rataip::laps
