#pragma once

#include "sdk/lap.h"
#include "tools/laps/lapformat.h"

#include <QIODevice>

namespace rataip::laps {

/**
 * Writes a lap's channels as a table: a line of names, a line of units, then a line a sample. The
 * recorded channels come first, then the calculated ones, whose names carry " (calculated)".
 *
 * Cells follow RFC 4180 (comma, quotes where needed, CR LF), texts are UTF-8. Numbers are written
 * with a point, whatever the locale, and with as many digits as it takes to read the same double
 * back. A missing reading is an empty cell, and so is what a shorter channel lacks at its end.
 */
[[nodiscard]] bool writeCsv(const TLM::SDK::Lap& lap, QIODevice& device);

/** writeCsv() as a format, suffix "csv". */
[[nodiscard]] LapFormat csvFormat();

}  // namespace rataip::laps
