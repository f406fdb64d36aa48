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

// More than a folder holds of one name: who finds them all taken counts for ever.
constexpr int mostNumbers = 100'000;

using OpenedFiles = std::vector<std::unique_ptr<QFile>>;

QString complaint(const QFile& file) {
    return QStringLiteral("cannot write %1: %2")
        .arg(QDir::toNativeSeparators(file.fileName()), file.errorString());
}

bool writeWhole(QFile& file, const std::function<bool(QIODevice&)>& write) {
    return write(file) && file.flush() && file.error() == QFileDevice::NoError;
}

/** The first name to try is free for the first of the files, which mostly is all that it takes. */
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
 * Makes the files of a name, up to the first that cannot be made, which is then the last of them.
 * An empty text when all were made, else why that one was not.
 *
 * The file system alone knows which names it holds for the same, so it is asked to make each file
 * and not to list those that are there.
 */
QString openAll(OpenedFiles& files, const QDir& folder, const QString& name,
                const QList<FileContent>& contents) {
    for (const FileContent& content : contents) {
        const QString path = folder.absoluteFilePath(name + QLatin1Char('.') + content.suffix);
        files.push_back(std::make_unique<QFile>(path));
        // What a buffer holds back cannot be written to a full disk in the end, and a file with
        // such a rest is not removed.
        if (!files.back()->open(QIODevice::WriteOnly | QIODevice::NewOnly |
                                QIODevice::Unbuffered)) {
            return complaint(*files.back());
        }
    }
    return {};
}

/** Whether a file could not be made because somebody else's is there. */
bool isTaken(const QFile& file) {
    return !file.isOpen() && file.exists();
}

/** What was made of the files; a file that is not ours is not open. */
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
    // Unlike QDir, this says what is in the way.
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
    // A disk that is full still takes a name.
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
    for (int attempt = 0; attempt < mostNumbers && !contents.isEmpty(); ++attempt) {
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
