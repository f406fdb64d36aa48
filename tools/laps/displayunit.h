#pragma once

#include <QString>

namespace rataip::laps {

/** How readings of a unit are shown to a driver: multiplied by `factor`, in `unit`. */
struct DisplayUnit {
    double factor = 1.0;
    QString unit;
};

/**
 * Speeds in km/h, angles in degrees, shares in percent: the simulator names a share of one "%", a
 * finished lap "pu". Any other unit stays as it is.
 */
[[nodiscard]] DisplayUnit displayUnit(const QString& unit);

/** "Speed (km/h)", or the name alone of what has no unit. */
[[nodiscard]] QString labelWithUnit(const QString& name, const QString& unit);

}  // namespace rataip::laps
