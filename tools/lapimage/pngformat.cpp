#include "tools/lapimage/pngformat.h"

#include "tools/lapimage/lappicture.h"
#include "tools/laps/writeall.h"

#include <QBuffer>

namespace rataip::lapimage {

namespace {

constexpr QSize sheetSize(1280, 800);

// Through memory, because the image writer hides the device's error.
bool writePng(const TLM::SDK::Lap& lap, QIODevice& device) {
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    return LapPicture(lap, sheetSize).image().save(&buffer, "PNG") &&
           laps::writeAll(device, buffer.data());
}

}  // namespace

laps::LapFormat pngFormat() {
    return {QStringLiteral("png"), &writePng};
}

}  // namespace rataip::lapimage
