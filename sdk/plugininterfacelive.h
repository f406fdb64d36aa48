#pragma once

#include "sdk/dataemitter.h"
#include "sdk/interfaceid.h"
#include "sdk/liveplugininfo.h"

#include <QString>
#include <QtPlugin>

namespace TLM::SDK {

/**
 * The interface between a host and a live plugin.
 *
 * Nothing here reports an error by its return: what happens is told by the signals of the emitter.
 * A host MUST connect to the signals it wants before it calls initialize(), and MUST call every
 * operation on the thread that owns the plugin object. The emitter lives exactly as long as the
 * plugin object; a host MUST NOT delete it.
 *
 * The code of laps and samples lies in the plugin's library. A host MUST NOT unload a library that
 * leaves the process then while it holds any of them. A plugin SHOULD keep its library in the
 * process, as rataip does: it may be unloaded at any time, what the host holds stays valid, and it
 * may be loaded again. QPluginLoader::unload() deletes the plugin object.
 *
 * A plugin derives from QObject first and from this class second:
 *
 * @code
 * class MyPlugin : public QObject, public TLM::SDK::PluginInterfaceLive {
 *     Q_OBJECT
 *     Q_PLUGIN_METADATA(IID TLM_SDK_PLUGININTERFACELIVE_IID)
 *     Q_INTERFACES(TLM::SDK::PluginInterfaceLive)
 *     ...
 * };
 * @endcode
 *
 * The order of the virtual functions is part of the interface's version.
 */
class PluginInterfaceLive {
public:
    PluginInterfaceLive() = default;
    virtual ~PluginInterfaceLive();

    PluginInterfaceLive(const PluginInterfaceLive&) = delete;
    PluginInterfaceLive& operator=(const PluginInterfaceLive&) = delete;

    /** One-time set-up after the host has loaded the plugin. */
    virtual void initialize() = 0;
    /** Stores the plugin's settings under a settings path or group. rataip stores nothing. */
    virtual void saveSettings(const QString& path) = 0;
    /** Reads them back. rataip has no settings: it reads nothing. */
    virtual void loadSettings(const QString& path) = 0;

    /** Name of the data source, the simulator's name. */
    virtual QString sourceName() const = 0;
    virtual QString pluginName() const = 0;
    virtual QString pluginVersion() const = 0;

    /** Looks whether the source can be reached now. rataip waits 200 ms at most. */
    virtual void checkConnectionAvailability() = 0;
    /**
     * Starts delivering data. rataip waits 200 ms at most, and has sent sendConnected() or
     * sendNotConnected() when it returns; while connected it does nothing.
     */
    virtual void connectToSource() = 0;
    /** Stops delivering data. */
    virtual void disconnectFromSource() = 0;

    /** Where the host connects to the signals. Owned by this object. */
    DataEmitter* dataEmitter() { return &emitter; }

    /** Whether the plugin is connected to its source. */
    bool isConnected() const { return connected; }

    /** Emits "[<source name> plugin] <text>" as a message of that level of detail. */
    void message(const QString& text, int verbose);

protected:
    /** The plugin emits its signals; this class only those of message(). */
    DataEmitter emitter;
    /** The car list and the names that the plugin announced last. */
    LivePluginInfo pluginInfo;
    /** Kept by the plugin. */
    bool connected = false;
};

}  // namespace TLM::SDK

Q_DECLARE_INTERFACE(TLM::SDK::PluginInterfaceLive, TLM_SDK_PLUGININTERFACELIVE_IID)
