#include "tools/host/liveplugin.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonObject>
#include <QObject>

#include <algorithm>
#include <utility>

namespace rataip::host {

namespace {

QString requiredInterface() {
    return QString::fromLatin1(qobject_interface_iid<TLM::SDK::PluginInterfaceLive*>());
}

/** The part of an interface identifier after its last slash. */
QString interfaceVersion(const QString& identifier) {
    return identifier.mid(identifier.lastIndexOf(QLatin1Char('/')) + 1);
}

/** The part of an interface identifier up to and including its last slash. */
QString interfaceName(const QString& identifier) {
    return identifier.left(identifier.lastIndexOf(QLatin1Char('/')) + 1);
}

/** Why the file at `path` cannot be read, or an empty text. */
QString complaintAboutFile(const QString& path) {
    const QFileInfo file(path);
    if (!file.exists()) {
        return QStringLiteral("there is no such file");
    }
    if (!file.isFile()) {
        return QStringLiteral("it is not a file");
    }
    if (!file.isReadable()) {
        return QStringLiteral("the file may not be read");
    }
    return {};
}

/** Why the library's metadata does not match this build's interface, or an empty text. */
QString complaintAboutMetadata(const QPluginLoader& loader) {
    const QJsonObject metadata = loader.metaData();
    if (metadata.isEmpty()) {
        return QStringLiteral("it is no plugin library (%1)").arg(loader.errorString());
    }
    const QString offered = metadata.value(QLatin1String("IID")).toString();
    const QString required = requiredInterface();
    if (offered == required) {
        return {};
    }
    if (interfaceName(offered) == interfaceName(required)) {
        return QStringLiteral(
                   "it was built for version %1 of the interface, this program takes version %2")
            .arg(interfaceVersion(offered), interfaceVersion(required));
    }
    return QStringLiteral("it is a plugin of another kind (it offers \"%1\", not \"%2\")")
        .arg(offered, required);
}

}  // namespace

LivePlugin::LivePlugin(std::unique_ptr<QPluginLoader> loader, TLM::SDK::PluginInterfaceLive* source)
    : m_loader(std::move(loader)), m_source(source) {}

LivePlugin::~LivePlugin() {
    m_source->disconnectFromSource();
    m_loader->unload();
}

LivePlugin::LoadResult LivePlugin::load(const QString& path) {
    const auto failure = [&path](const QString& reason) {
        return LoadResult{nullptr, QStringLiteral("cannot use %1 as plugin: %2")
                                       .arg(QDir::toNativeSeparators(path), reason)};
    };

    // With an absolute path the loader does not search other folders or guess suffixes.
    const QString absolutePath = QFileInfo(path).absoluteFilePath();
    const QString fileComplaint = complaintAboutFile(absolutePath);
    if (!fileComplaint.isEmpty()) {
        return failure(fileComplaint);
    }

    auto loader = std::make_unique<QPluginLoader>(absolutePath);
    loader->setLoadHints(QLibrary::PreventUnloadHint);
    const QString metadataComplaint = complaintAboutMetadata(*loader);
    if (!metadataComplaint.isEmpty()) {
        return failure(metadataComplaint);
    }
    if (!loader->load()) {
        return failure(QStringLiteral("it does not load (%1)").arg(loader->errorString()));
    }

    QObject* const object = loader->instance();
    if (object == nullptr) {
        return failure(QStringLiteral("it hands out no plugin object"));
    }
    auto* const source = qobject_cast<TLM::SDK::PluginInterfaceLive*>(object);
    if (source == nullptr) {
        const QString className = QString::fromLatin1(object->metaObject()->className());
        loader->unload();
        return failure(QStringLiteral("its object of class %1 does not implement \"%2\"")
                           .arg(className, requiredInterface()));
    }
    return {std::unique_ptr<LivePlugin>(new LivePlugin(std::move(loader), source)), {}};
}

QStringList standardPluginPaths(const QString& programFolder) {
    const QString fileName = QStringLiteral(RATAIP_PLUGIN_FILE);
    const QDir folder(programFolder);
    return {QDir::cleanPath(folder.absoluteFilePath(fileName)),
            QDir::cleanPath(folder.absoluteFilePath(QStringLiteral("../plugins/") + fileName))};
}

PluginFile findPlugin(const QString& named, const QString& programFolder) {
    if (!named.isEmpty()) {
        return {named, {}};
    }
    const QStringList places = standardPluginPaths(programFolder);
    const auto found = std::find_if(places.cbegin(), places.cend(),
                                    [](const QString& path) { return QFileInfo(path).isFile(); });
    if (found == places.cend()) {
        return {{},
                QStringLiteral("found no plugin at %1").arg(places.join(QStringLiteral(" or ")))};
    }
    return {*found, {}};
}

}  // namespace rataip::host
