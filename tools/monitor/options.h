#pragma once

#include "tools/host/commandline.h"

#include <QString>
#include <QStringList>

#include <chrono>
#include <optional>

namespace rataip::monitor {

/** What the command line asks for. */
struct Options {
    QString pluginPath;                             // empty: the standard places
    std::optional<std::chrono::milliseconds> wait;  // none: for as long as it takes
    std::optional<std::chrono::milliseconds> duration;
    std::optional<int> laps;
    QString exportFolder;  // empty: laps are not saved
};

using ParsedArguments = host::ParsedArguments<Options>;

/** Reads the command line; `arguments` begins with the program's name. */
[[nodiscard]] ParsedArguments parseArguments(const QStringList& arguments);

/**
 * Whether the command line asks for laps to be saved, which takes another kind of application
 * object. Looks at the arguments as the system gave them, before there is any such object.
 */
[[nodiscard]] bool asksForExport(int count, const char* const* arguments);

/** The text of --help. */
[[nodiscard]] QString helpText();

/** The text of --version. */
[[nodiscard]] QString versionText();

}  // namespace rataip::monitor
