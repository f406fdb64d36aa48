#pragma once

namespace rataip::monitor {

/** How the program ends; part of what scripts rely on. */
enum class ExitStatus {
    Ok = 0,              // got what was asked for
    BadArguments = 1,    // the command line makes no sense
    PluginUnusable = 2,  // the plugin was not found or does not fit
    NoData = 3,          // no data of a simulator ever arrived
    FellShort = 4,       // data arrived, but it ended before the laps or the time asked for
    NotWritten = 5,      // something is missing of the laps to save or of the output, whatever else
};

}  // namespace rataip::monitor
