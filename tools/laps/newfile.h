#pragma once

#include <QByteArray>
#include <QDir>
#include <QIODevice>
#include <QList>
#include <QString>
#include <QStringList>

#include <functional>

namespace rataip::laps {

/** One of the files that are written under the same name. */
struct FileContent {
    /** What the file's name ends in, without the dot. */
    QString suffix;
    /** Writes the whole file; false when it could not, with the device's error text saying why. */
    std::function<bool(QIODevice&)> write;
};

/** The files that were written, or the reason why there are none. */
struct NewFiles {
    QStringList paths;  // in the order of the contents
    QString error;      // one sentence that names the file, without a full stop; else empty
};

/** Makes the folder and those above it. An empty text, or one sentence why it cannot be. */
[[nodiscard]] QString makeFolder(const QString& path);

/**
 * Makes the folder and a file in it, which goes again. An empty text, or one sentence why files
 * cannot be written there: only the attempt tells what rights, disks and networks allow.
 */
[[nodiscard]] QString tryFolder(const QString& path);

/**
 * Writes files that were not there before and that differ in their suffix only: "lap.csv" and
 * "lap.json". When one of them is taken, all get the next number behind their name ("lap_1.csv",
 * "lap_1.json"), also when somebody else takes it at this very moment, or under a name that only
 * the file system holds for the same. Nothing is ever overwritten.
 *
 * When one cannot be written (no rights, a full disk), nothing is left of any of them.
 */
[[nodiscard]] NewFiles writeNewFiles(const QDir& folder, const QString& name,
                                     const QList<FileContent>& contents);

/**
 * Writes all bytes; false when the device cannot, with its error text saying why. A disk that is
 * nearly full takes a part of them without an error; only writing the rest reports it.
 */
[[nodiscard]] bool writeAll(QIODevice& device, const QByteArray& bytes);

}  // namespace rataip::laps
