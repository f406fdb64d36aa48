#pragma once

#include "sdk/lap.h"

#include <QIODevice>
#include <QString>

#include <functional>

namespace rataip::laps {

/** A file format for laps. */
struct LapFormat {
    /** The file's suffix without its dot. */
    QString suffix;
    /**
     * Writes the whole file. Returns false on failure, with the reason in the device's error text.
     * Called on any thread, for one lap at a time. Must only read the lap.
     */
    std::function<bool(const TLM::SDK::Lap& lap, QIODevice& device)> write;
};

}  // namespace rataip::laps
