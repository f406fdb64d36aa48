#pragma once

#include <QByteArray>
#include <QIODevice>

namespace rataip::laps {

/**
 * Writes all bytes; false when the device cannot, with its error text saying why. A disk that is
 * nearly full takes the first part of them and says nothing: the reason comes with the rest.
 */
[[nodiscard]] bool writeAll(QIODevice& device, const QByteArray& bytes);

}  // namespace rataip::laps
