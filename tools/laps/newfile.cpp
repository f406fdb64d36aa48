#include "tools/laps/newfile.h"

#include "sdk/utilities.h"

#include <QFile>
#include <QFileInfo>

#include <filesystem>
#include <system_error>

namespace rataip::laps {

namespace {

// Another program would have to take a name between our look and our opening that often.
constexpr int mostAttempts = 100;

QString complaint(const QFile& file) {
    return QStringLiteral("cannot write %1: %2")
        .arg(QDir::toNativeSeparators(file.fileName()), file.errorString());
}

bool writeWhole(QFile& file, const std::function<bool(QIODevice&)>& write) {
    return write(file) && file.flush() && file.error() == QFileDevice::NoError;
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

NewFile writeNewFile(const QDir& folder, const QString& name,
                     const std::function<bool(QIODevice&)>& write) {
    QFile file;
    for (int attempt = 0; attempt < mostAttempts; ++attempt) {
        file.setFileName(TLM::SDK::generateUniqueFileName(folder, name));
        if (file.open(QIODevice::WriteOnly | QIODevice::NewOnly)) {
            break;
        }
        if (!file.exists()) {
            return {{}, complaint(file)};
        }
    }
    if (!file.isOpen()) {
        return {{}, complaint(file)};
    }
    if (!writeWhole(file, write)) {
        const QString error = complaint(file);
        file.remove();
        return {{}, error};
    }
    return {file.fileName(), {}};
}

}  // namespace rataip::laps
