#pragma once

#include "sdk/lap.h"
#include "tools/laps/lapformat.h"

#include <QIODevice>

namespace rataip::laps {

/**
 * Writes a lap's channels as a table: a line of names, a line of units, then a line per sample. The
 * recorded channels come first, then the calculated ones, whose names end in " (calculated)".
 *
 * The format is RFC 4180 (comma, quotes where needed, CR LF) in UTF-8. Numbers have a decimal point
 * in every locale and enough digits to read back the same double. A cell is empty where a reading
 * is missing or the channel is shorter than others.
 */
[[nodiscard]] bool writeCsv(const TLM::SDK::Lap& lap, QIODevice& device);

/** The format "csv", written by writeCsv(). */
[[nodiscard]] LapFormat csvFormat();

}  // namespace rataip::laps
