#pragma once

#include <QString>

namespace rataip::laps {

/** How readings are shown to a driver: multiplied by `factor`, in `unit`. */
struct DisplayUnit {
    double factor = 1.0;
    QString unit;
};

/**
 * Speeds are shown in km/h, angles in degrees and shares in percent. A share from 0 to 1 has the
 * unit "%" in the simulator and "pu" in a finished lap. Other units stay unchanged.
 */
[[nodiscard]] DisplayUnit displayUnit(const QString& unit);

/** "Speed (km/h)", or just the name without a unit. */
[[nodiscard]] QString labelWithUnit(const QString& name, const QString& unit);

}  // namespace rataip::laps
