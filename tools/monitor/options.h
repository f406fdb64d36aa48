#pragma once

#include "tools/host/commandline.h"

#include <QString>
#include <QStringList>

#include <chrono>
#include <optional>

namespace rataip::monitor {

/** What the command line asks for. */
struct Options {
    QString pluginPath;                             // empty: search the standard places
    std::optional<std::chrono::milliseconds> wait;  // no value: wait forever
    std::optional<std::chrono::milliseconds> duration;
    std::optional<int> laps;
    QString exportFolder;  // empty: laps are not saved
};

using ParsedArguments = host::ParsedArguments<Options>;

/** Reads the command line; `arguments` begins with the program's name. */
[[nodiscard]] ParsedArguments parseArguments(const QStringList& arguments);

/**
 * Whether the command line asks to save laps, which needs another kind of application object. Reads
 * the system's arguments, because there is no such object yet.
 */
[[nodiscard]] bool asksForExport(int count, const char* const* arguments);

/** The text of --help. */
[[nodiscard]] QString helpText();

/** The text of --version. */
[[nodiscard]] QString versionText();

}  // namespace rataip::monitor
