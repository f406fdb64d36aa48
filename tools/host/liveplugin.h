#pragma once

#include "sdk/plugininterfacelive.h"

#include <QPluginLoader>
#include <QString>

#include <memory>

namespace rataip::host {

/**
 * A live-source plugin that was loaded from a library file, and its one plugin object.
 *
 * Loading fails without side effects: the library of another interface version, of another kind or
 * of another Qt is told apart by its embedded metadata, before any code of it runs.
 *
 * Lifetime: the object disconnects from its source and deletes the plugin's object when it is
 * destroyed; the library itself stays in the process, because laps and samples that the host still
 * holds run code of the library when they are released. Nothing may use source() after that.
 */
class LivePlugin {
public:
    struct LoadResult;

    /**
     * Loads the plugin from `path` (relative paths start at the current folder) and checks it:
     * that the file exists, is a plugin library, names this build's interface identifier in its
     * metadata, loads, and hands out an object with the interface. The object is not initialised.
     */
    [[nodiscard]] static LoadResult load(const QString& path);

    ~LivePlugin();
    LivePlugin(const LivePlugin&) = delete;
    LivePlugin& operator=(const LivePlugin&) = delete;

    /** The plugin's object, valid as long as this object is. */
    [[nodiscard]] TLM::SDK::PluginInterfaceLive& source() const { return *m_source; }

    /** The absolute path of the library file. */
    [[nodiscard]] QString filePath() const { return m_loader->fileName(); }

private:
    LivePlugin(std::unique_ptr<QPluginLoader> loader, TLM::SDK::PluginInterfaceLive* source);

    std::unique_ptr<QPluginLoader> m_loader;
    TLM::SDK::PluginInterfaceLive* m_source;  // part of the object that m_loader owns
};

/** Either a plugin, or the reason why there is none: one sentence that names the file. */
struct LivePlugin::LoadResult {
    std::unique_ptr<LivePlugin> plugin;
    QString error;
};

}  // namespace rataip::host
