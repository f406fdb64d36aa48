#pragma once

#include "sdk/plugininterfacelive.h"
#include "tools/host/liveplugin.h"
#include "tools/host/sourceconnector.h"
#include "tools/host/tickmeter.h"
#include "tools/viewer/field.h"
#include "tools/viewer/livelap.h"

#include <QElapsedTimer>
#include <QObject>
#include <QSharedPointer>
#include <QString>

#include <memory>

namespace rataip::viewer {

/**
 * The state behind the window: the plugin, its connection, and what it has delivered so far.
 *
 * When a plugin cannot be loaded, pluginError() says why, and another may be loaded. Once told to
 * connect, the session waits for the simulator and connects again after losing it.
 *
 * The data of every tick is stored without emitting a signal. A window reads it when it draws.
 */
class Session : public QObject {
    Q_OBJECT

public:
    enum class State {
        NoPlugin,
        Disconnected,
        Waiting,  // for a simulator
        Connected,
    };

    Session();
    ~Session() override;

    /** Loads and initialises a plugin. A session takes only one plugin in its life. */
    bool loadPlugin(const QString& path);

    /** Initialises a plugin that is already loaded. `source` must outlive the session. */
    void setSource(TLM::SDK::PluginInterfaceLive& source);

    /** Sets the reason why there is no plugin. */
    void setPluginError(const QString& sentence);

    void probe();
    void connectToSource();
    void disconnectFromSource();

    [[nodiscard]] State state() const { return m_state; }
    /** Why there is no plugin, in one sentence. Empty when there is one. */
    [[nodiscard]] const QString& pluginError() const { return m_pluginError; }
    /** "iR Plugin 0.2 for iRacing"; empty without a plugin. */
    [[nodiscard]] QString pluginText() const;

    /** Whether a tick has arrived within the last half second. */
    [[nodiscard]] bool isDataArriving() const;
    [[nodiscard]] host::TickMeter& ticks() { return m_ticks; }
    [[nodiscard]] const Field& field() const { return m_field; }
    [[nodiscard]] const LiveLap& liveLap() const { return m_liveLap; }

signals:
    void stateChanged();
    void probed(bool available);
    void message(const QString& text);
    void lapArrived(const QSharedPointer<TLM::SDK::Lap>& lap);

private:
    void setState(State state);
    void onConnected();
    void onDisconnected();
    void onSamples(const QList<TLM::SDK::Sample>& samples);
    void onLap(const QSharedPointer<TLM::SDK::Lap>& lap);

    std::unique_ptr<host::LivePlugin> m_plugin;
    TLM::SDK::PluginInterfaceLive* m_source = nullptr;  // m_plugin's, or the caller's
    std::unique_ptr<host::SourceConnector> m_connector;
    State m_state = State::NoPlugin;
    QString m_pluginError;
    host::TickMeter m_ticks;
    QElapsedTimer m_sinceTick;
    Field m_field;
    LiveLap m_liveLap;
};

}  // namespace rataip::viewer
