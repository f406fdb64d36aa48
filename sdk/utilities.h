#pragma once

#include "sdk/carstatus.h"

#include <QDir>
#include <QString>

namespace TLM::SDK {

/**
 * Whether `v` is a reading: below the single-precision 1e24. Missing readings are marked with the
 * single-precision 1e25; NaN is no reading either. There is no lower limit.
 */
bool isValidValue(double v);

/**
 * The absolute path of a file in `dir` that does not exist there yet, made from the base name (up
 * to the first dot) and the suffix (after the last dot) of `fileName`: "lap.csv", then "lap_1.csv",
 * "lap_2.csv" and so on. A folder within `fileName` is dropped.
 *
 * The dot is always written, so "notes" gives "notes."; files without a dot never collide. The
 * folder is listed once: a file made by somebody else meanwhile is not seen.
 */
QString generateUniqueFileName(const QDir& dir, const QString& fileName);

}  // namespace TLM::SDK
