#pragma once

#include <QString>
#include <QStringList>

namespace rataip::host {

/**
 * The paths at which a program looks for the plugin by default: in `programFolder`, which holds the
 * program, then in the folder "plugins" next to it, as in the build tree and in an installation.
 */
[[nodiscard]] QStringList standardPluginPaths(const QString& programFolder);

/** The first of `paths` that is a file, or a null text. */
[[nodiscard]] QString firstExistingFile(const QStringList& paths);

/** The path of the file to load, or why none was found. */
struct PluginFile {
    QString path;
    QString error;  // one sentence without a full stop, or empty
};

/**
 * The plugin that the user named, whether it exists or not. Without a name, the one at the standard
 * places.
 */
[[nodiscard]] PluginFile findPlugin(const QString& named, const QString& programFolder);

}  // namespace rataip::host
