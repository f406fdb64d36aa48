#pragma once

#include <QString>

namespace reader {

/**
 * The name under which a lap being recorded keeps how far its car has come, as a part of the lap.
 * It is the recorder's own: a lap that is handed over has no such value.
 */
[[nodiscard]] inline const QString& farthestDistanceName() {
    static const QString name = QStringLiteral("maxLapDistPct");
    return name;
}

}  // namespace reader
