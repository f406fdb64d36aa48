#pragma once

#include "sdk/lap.h"

#include <QIODevice>
#include <QString>

#include <functional>

namespace rataip::laps {

/** A kind of file that a lap can be written as. */
struct LapFormat {
    /** The file's suffix without its dot. */
    QString suffix;
    /**
     * Writes the whole file; false when it could not, with the device's error text saying why.
     * Runs on any thread, one lap at a time, and only reads the lap.
     */
    std::function<bool(const TLM::SDK::Lap& lap, QIODevice& device)> write;
};

}  // namespace rataip::laps
