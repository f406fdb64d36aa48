#pragma once

#include "tools/host/commandline.h"

#include <QSize>
#include <QString>
#include <QStringList>

#include <chrono>
#include <optional>

namespace rataip::viewer {

/** What the command line asks for. */
struct Options {
    QString pluginPath;                                 // empty: search the standard places
    std::optional<std::chrono::milliseconds> duration;  // no value: until it is closed
    std::optional<QSize> size;                          // no value: the size of the last run
    QString picturePath;                                // empty: no picture
    QString lapPicturePath;                             // empty: no picture
};

using ParsedArguments = host::ParsedArguments<Options>;

/** Reads the command line; `arguments` begins with the program's name. */
[[nodiscard]] ParsedArguments parseArguments(const QStringList& arguments);

/** The text of --help. */
[[nodiscard]] QString helpText();

/** The text of --version. */
[[nodiscard]] QString versionText();

}  // namespace rataip::viewer
