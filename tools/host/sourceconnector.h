#pragma once

#include "sdk/plugininterfacelive.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <chrono>
#include <optional>

namespace rataip::host {

/**
 * Keeps a plugin connected to its source: tries again and again while the source is not there, and
 * anew after it was lost.
 *
 * When the source stays away for longer than the patience given, the connector says so once with
 * gaveUp() and makes no further attempt; without a patience it goes on trying. The last attempt is
 * made when the patience is over, so a patience of zero means one attempt.
 */
class SourceConnector : public QObject {
    Q_OBJECT

public:
    /**
     * `source` must outlive the connector and must be initialised before start(). An empty
     * `patience` means trying for ever.
     */
    SourceConnector(TLM::SDK::PluginInterfaceLive& source,
                    std::optional<std::chrono::milliseconds> patience);

    /** Makes the first attempt, before it returns. The whole patience begins anew. */
    void start();

    /**
     * Disconnects and makes no further attempt. Not to be called from within a slot of the
     * plugin's signals, which would end the tick that emits them.
     */
    void stop();

signals:
    /**
     * The source is not there, or no longer there; attempts go on. Once for each time of waiting.
     */
    void waiting();

    /** The source did not come in time; no further attempt is made. */
    void gaveUp();

private:
    void attempt();
    [[nodiscard]] std::chrono::milliseconds timeWaited() const;
    /** How long to leave the source alone after the attempt that is being made. */
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
