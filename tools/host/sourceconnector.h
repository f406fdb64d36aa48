#pragma once

#include "sdk/plugininterfacelive.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <chrono>
#include <optional>

namespace rataip::host {

/**
 * Keeps a plugin connected to its source: retries while the source is not available, and connects
 * again after losing it.
 *
 * When the source stays away for longer than `patience`, the connector emits gaveUp() and stops
 * trying. Without a patience it never stops. The last attempt is made when the patience ends, so a
 * patience of zero means one attempt.
 */
class SourceConnector : public QObject {
    Q_OBJECT

public:
    /**
     * `source` must outlive the connector and must be initialised before start(). Without a
     * `patience` the connector tries forever.
     */
    SourceConnector(TLM::SDK::PluginInterfaceLive& source,
                    std::optional<std::chrono::milliseconds> patience);

    /** Makes the first attempt before it returns. The patience starts again. */
    void start();

    /**
     * Disconnects and makes no further attempt. Must not be called from a slot of the plugin's
     * signals, because that would end the tick that emits them.
     */
    void stop();

signals:
    /**
     * The source is not available, or was lost; attempts continue. Emitted once per wait.
     */
    void waiting();

    /** The source did not appear in time. No further attempt is made. */
    void gaveUp();

private:
    void attempt();
    [[nodiscard]] std::chrono::milliseconds timeWaited() const;
    /** How long to wait after the current attempt. */
    [[nodiscard]] std::chrono::milliseconds interval() const;
    void waitForSource();
    void onConnected();
    void onNotConnected();
    void onDisconnected();

    TLM::SDK::PluginInterfaceLive& m_source;
    std::optional<std::chrono::milliseconds> m_patience;
    QTimer m_nextAttempt;
    QElapsedTimer m_waitingSince;  // invalid while connected or stopped
    QElapsedTimer m_attemptBegan;  // invalid between attempts
    bool m_active = false;
};

}  // namespace rataip::host
