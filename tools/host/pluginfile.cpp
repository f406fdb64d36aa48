#include "tools/host/pluginfile.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace rataip::host {

QStringList standardPluginPaths(const QString& programFolder) {
    const QString fileName = QStringLiteral(RATAIP_PLUGIN_FILE);
    const QDir folder(programFolder);
    return {QDir::cleanPath(folder.absoluteFilePath(fileName)),
            QDir::cleanPath(folder.absoluteFilePath(QStringLiteral("../plugins/") + fileName))};
}

QString firstExistingFile(const QStringList& paths) {
    const auto found = std::find_if(paths.cbegin(), paths.cend(),
                                    [](const QString& path) { return QFileInfo(path).isFile(); });
    return found == paths.cend() ? QString() : *found;
}

PluginFile findPlugin(const QString& named, const QString& programFolder) {
    if (!named.isEmpty()) {
        return {named, {}};
    }
    const QStringList places = standardPluginPaths(programFolder);
    const QString path = firstExistingFile(places);
    return {path,
            path.isEmpty()
                ? QStringLiteral("found no plugin at %1").arg(places.join(QStringLiteral(" or ")))
                : QString()};
}

}  // namespace rataip::host
