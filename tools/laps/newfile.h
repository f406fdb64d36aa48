#pragma once

#include <QByteArray>
#include <QDir>
#include <QIODevice>
#include <QList>
#include <QString>
#include <QStringList>

#include <functional>

namespace rataip::laps {

/** One of several files that are written under the same name. */
struct FileContent {
    /** The file's suffix without its dot. */
    QString suffix;
    /** Writes the whole file. Returns false on failure, with the reason in the error text. */
    std::function<bool(QIODevice&)> write;
};

/** The files that were written, or the reason why none were. */
struct NewFiles {
    QStringList paths;  // in the order of the contents
    QString error;      // one sentence that names the file, without a full stop; else empty
};

/** Makes a folder and its parents. Returns an empty text, or one sentence why it failed. */
[[nodiscard]] QString makeFolder(const QString& path);

/**
 * Makes a folder and writes a trial file into it, which is then removed: only the attempt shows
 * what permissions, disks and networks allow. Returns an empty text, or one sentence why it failed.
 */
[[nodiscard]] QString tryFolder(const QString& path);

/**
 * Writes new files that differ only in their suffix, such as "lap.csv" and "lap.json". When one of
 * the names is taken, all get the next number ("lap_1.csv", "lap_1.json"). This also holds when
 * another program takes a name at the same moment, or when the file system treats two different
 * names as equal. Existing files are never overwritten.
 *
 * When one file cannot be written (no permission, a full disk), all of them are removed.
 */
[[nodiscard]] NewFiles writeNewFiles(const QDir& folder, const QString& name,
                                     const QList<FileContent>& contents);

/**
 * Writes all bytes. Returns false on failure, with the reason in the device's error text. A nearly
 * full disk accepts a part of the bytes without an error; only writing the rest reports it.
 */
[[nodiscard]] bool writeAll(QIODevice& device, const QByteArray& bytes);

}  // namespace rataip::laps
