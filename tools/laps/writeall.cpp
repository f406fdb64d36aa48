#include "tools/laps/writeall.h"

namespace rataip::laps {

bool writeAll(QIODevice& device, const QByteArray& bytes) {
    qint64 written = 0;
    while (written < bytes.size()) {
        const qint64 taken = device.write(bytes.constData() + written, bytes.size() - written);
        if (taken <= 0) {
            return false;
        }
        written += taken;
    }
    return true;
}

}  // namespace rataip::laps
