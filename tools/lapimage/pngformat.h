#pragma once

#include "tools/laps/lapformat.h"

namespace rataip::lapimage {

/** A lap's picture (see LapPicture) as a format, suffix "png". Needs a QGuiApplication. */
[[nodiscard]] laps::LapFormat pngFormat();

}  // namespace rataip::lapimage
