#pragma once

#include <QString>
#include <QStringList>

namespace rataip::host {

/**
 * The paths at which a program looks for the plugin when none was named, most likely first: beside
 * the program, then in the folder "plugins" next to the program's own folder (the layout of the
 * build tree and of an installation). `programFolder` is the folder that holds the program.
 */
[[nodiscard]] QStringList standardPluginPaths(const QString& programFolder);

/** The first of `paths` at which there is a file, or a null text when there is none. */
[[nodiscard]] QString firstExistingFile(const QStringList& paths);

}  // namespace rataip::host
