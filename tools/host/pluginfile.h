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

/** The path of the file to load, or the reason why there is none. */
struct PluginFile {
    QString path;
    QString error;  // one sentence without a full stop; empty when there is a path
};

/**
 * The plugin that a user named, whether it is there or not, or without a name the one at the
 * standard places.
 */
[[nodiscard]] PluginFile findPlugin(const QString& named, const QString& programFolder);

}  // namespace rataip::host
