#pragma once

#include <QDir>
#include <QIODevice>
#include <QString>

#include <functional>

namespace rataip::laps {

/** Either the path of a file that was written whole, or the reason why there is none. */
struct NewFile {
    QString path;
    QString error;  // one sentence that names the file, without a full stop; empty when all is well
};

/** Makes the folder and those above it. An empty text, or one sentence why it cannot be. */
[[nodiscard]] QString makeFolder(const QString& path);

/**
 * Writes a file that was not there before. A name that is taken gets a number behind it, also when
 * somebody else takes it at this very moment; nothing is ever overwritten. What follows the first
 * dot of `name` and precedes the last one is dropped.
 *
 * When writing fails (no rights, a full disk), nothing is left of the file.
 */
[[nodiscard]] NewFile writeNewFile(const QDir& folder, const QString& name,
                                   const std::function<bool(QIODevice&)>& write);

}  // namespace rataip::laps
