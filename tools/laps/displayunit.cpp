#include "tools/laps/displayunit.h"

namespace rataip::laps {

DisplayUnit displayUnit(const QString& unit) {
    constexpr double kKilometresPerHour = 3.6;
    constexpr double kDegrees = 57.29577951308232;
    constexpr double kPercent = 100.0;
    if (unit == QLatin1String("m/s")) {
        return {kKilometresPerHour, QStringLiteral("km/h")};
    }
    if (unit == QLatin1String("rad")) {
        return {kDegrees, QStringLiteral("°")};
    }
    if (unit == QLatin1String("%") || unit == QLatin1String("pu")) {
        return {kPercent, QStringLiteral("%")};
    }
    return {1.0, unit};
}

QString labelWithUnit(const QString& name, const QString& unit) {
    return unit.isEmpty() ? name : QStringLiteral("%1 (%2)").arg(name, unit);
}

}  // namespace rataip::laps
