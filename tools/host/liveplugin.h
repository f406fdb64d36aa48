#pragma once

#include "sdk/plugininterfacelive.h"

#include <QPluginLoader>
#include <QString>
#include <QStringList>

#include <memory>

namespace rataip::host {

/**
 * A live-source plugin loaded from a library file, and its plugin object.
 *
 * Loading fails without side effects: a library of another interface version, another kind or
 * another Qt is detected by its embedded metadata, before any of its code runs.
 *
 * Lifetime: the destructor disconnects from the source and deletes the plugin's object; source()
 * MUST NOT be used after that. The library itself stays in the process, because laps and samples
 * that the host still holds run its code when they are released.
 */
class LivePlugin {
public:
    struct LoadResult;

    /**
     * Loads the plugin from `path`, which is relative to the current folder unless absolute. Checks
     * that the file exists, is a plugin library, has this build's interface identifier in its
     * metadata, can be loaded, and returns an object with the interface. Does not initialise it.
     */
    [[nodiscard]] static LoadResult load(const QString& path);

    ~LivePlugin();
    LivePlugin(const LivePlugin&) = delete;
    LivePlugin& operator=(const LivePlugin&) = delete;

    /** The plugin's object, valid during the lifetime of this object. */
    [[nodiscard]] TLM::SDK::PluginInterfaceLive& source() const { return *m_source; }

    /** The absolute path of the library file. */
    [[nodiscard]] QString filePath() const { return m_loader->fileName(); }

private:
    LivePlugin(std::unique_ptr<QPluginLoader> loader, TLM::SDK::PluginInterfaceLive* source);

    std::unique_ptr<QPluginLoader> m_loader;
    TLM::SDK::PluginInterfaceLive* m_source;  // owned by m_loader
};

/** A plugin, or one sentence that names the file and says why it cannot be used. */
struct LivePlugin::LoadResult {
    std::unique_ptr<LivePlugin> plugin;
    QString error;
};

/** The path of the file to load, or why none was found. */
struct PluginFile {
    QString path;
    QString error;  // one sentence without a full stop, or empty
};

/**
 * The paths at which a program looks for the plugin by default: in `programFolder`, which holds the
 * program, then in the folder "plugins" next to it, as in the build tree and in an installation.
 */
[[nodiscard]] QStringList standardPluginPaths(const QString& programFolder);

/**
 * The plugin that the user named, whether it exists or not. Without a name, the first file at the
 * standard paths.
 */
[[nodiscard]] PluginFile findPlugin(const QString& named, const QString& programFolder);

}  // namespace rataip::host
