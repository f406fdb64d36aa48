#include "tools/laps/newfile.h"

#include "sdk/utilities.h"

#include <QFile>
#include <QFileInfo>

#include <filesystem>
#include <memory>
#include <system_error>
#include <vector>

namespace rataip::laps {

namespace {

// Stops the search where every number appears to be taken. No folder has as many files of one name.
constexpr int kMaxAttempts = 100'000;

using OpenedFiles = std::vector<std::unique_ptr<QFile>>;

QString complaint(const QFile& file) {
    return QStringLiteral("cannot write %1: %2")
        .arg(QDir::toNativeSeparators(file.fileName()), file.errorString());
}

bool writeWhole(QFile& file, const std::function<bool(QIODevice&)>& write) {
    return write(file) && file.flush() && file.error() == QFileDevice::NoError;
}

/** The first candidate is free for the first file, and so usually for all of them. */
QString candidateName(const QDir& folder, const QString& name, const QString& firstSuffix,
                      int attempt) {
    if (attempt > 0) {
        return QStringLiteral("%1_%2").arg(name, QString::number(attempt));
    }
    const QString path =
        TLM::SDK::generateUniqueFileName(folder, name + QLatin1Char('.') + firstSuffix);
    return QFileInfo(path).completeBaseName();
}

/**
 * Creates the files of a name. Stops at the first failure; that file is then the last of `files`.
 * Returns an empty text, or why that file could not be created.
 *
 * Tries to create each file instead of looking at the files in the folder, because only the file
 * system knows which names it treats as equal.
 */
QString openAll(OpenedFiles& files, const QDir& folder, const QString& name,
                const QList<FileContent>& contents) {
    for (const FileContent& content : contents) {
        const QString path = folder.absoluteFilePath(name + QLatin1Char('.') + content.suffix);
        files.push_back(std::make_unique<QFile>(path));
        // Unbuffered, because a file with a rest in its buffer cannot be removed on a full disk.
        if (!files.back()->open(QIODevice::WriteOnly | QIODevice::NewOnly |
                                QIODevice::Unbuffered)) {
            return complaint(*files.back());
        }
    }
    return {};
}

/** Whether a file could not be created because one with its name exists. */
bool isTaken(const QFile& file) {
    return !file.isOpen() && file.exists();
}

/** Removes the files created here. Files of others are not open. */
void removeAll(const OpenedFiles& files) {
    for (const std::unique_ptr<QFile>& file : files) {
        if (file->isOpen()) {
            file->remove();
        }
    }
}

}  // namespace

QString makeFolder(const QString& path) {
    const QFileInfo folder(path);
    if (folder.isDir()) {
        return {};
    }
    const QString shown = QDir::toNativeSeparators(path);
    if (folder.exists()) {
        return QStringLiteral("cannot write into %1: it is not a folder").arg(shown);
    }
    // Unlike QDir, this reports the reason of a failure.
    std::error_code failure;
    std::filesystem::create_directories(folder.filesystemFilePath(), failure);
    return failure ? QStringLiteral("cannot make the folder %1: %2")
                         .arg(shown, QString::fromLocal8Bit(failure.message().c_str()))
                   : QString();
}

QString tryFolder(const QString& path) {
    QString error = makeFolder(path);
    if (!error.isEmpty()) {
        return error;
    }
    // Writes some bytes, because a full disk still accepts an empty file.
    const NewFiles trial = writeNewFiles(
        QDir(path), QStringLiteral("trial"),
        {{QStringLiteral("tmp"), [](QIODevice& device) { return writeAll(device, "trial"); }}});
    for (const QString& made : trial.paths) {
        QFile::remove(made);
    }
    return trial.error;
}

NewFiles writeNewFiles(const QDir& folder, const QString& name,
                       const QList<FileContent>& contents) {
    OpenedFiles files;
    QString error;
    for (int attempt = 0; attempt < kMaxAttempts && !contents.isEmpty(); ++attempt) {
        files.clear();
        const QString candidate =
            candidateName(folder, name, contents.constFirst().suffix, attempt);
        error = openAll(files, folder, candidate, contents);
        if (error.isEmpty() || !isTaken(*files.back())) {
            break;
        }
        removeAll(files);
    }
    if (!error.isEmpty()) {
        removeAll(files);
        return {{}, error};
    }

    NewFiles written;
    for (std::size_t i = 0; i < files.size(); ++i) {
        if (!writeWhole(*files[i], contents.at(static_cast<qsizetype>(i)).write)) {
            const QString failure = complaint(*files[i]);
            removeAll(files);
            return {{}, failure};
        }
        written.paths.append(files[i]->fileName());
    }
    return written;
}

bool writeAll(QIODevice& device, const QByteArray& bytes) {
    qint64 written = 0;
    while (written < bytes.size()) {
        const qint64 taken = device.write(bytes.constData() + written, bytes.size() - written);
        if (taken <= 0) {
            return false;
        }
        written += taken;
    }
    return true;
}

}  // namespace rataip::laps
