#pragma once

#include "sdk/dataemitter.h"
#include "tools/host/carlist.h"
#include "tools/host/tickmeter.h"
#include "tools/monitor/console.h"

#include <QObject>
#include <QTimer>

namespace rataip::monitor {

/**
 * Prints what a plugin delivers: its messages, new and changed cars, a line for every finished lap,
 * and a status line while it is connected.
 *
 * Listens to all twelve signals of the plugin's emitter and only reads their data. Laps without
 * samples are ignored; a source also closes the laps of empty slots.
 */
class Account : public QObject {
    Q_OBJECT

public:
    /** Both must outlive the account. */
    Account(const TLM::SDK::DataEmitter& emitter, Console& console);

    /** Says that the simulator is being waited for. */
    void showWaiting();

    /** Says that there is no simulator and that the program stops waiting. */
    void showNoSimulator();

    /** Prints a summary as the last line. */
    void showSummary();

private:
    void onConnected();
    void onDisconnected();
    void onNotConnected();
    void onConnectivityAvailable(bool available);
    void onTelemetryLap(const QSharedPointer<TLM::SDK::Lap>& lap);
    void onTelemetryLapHeader(const TLM::SDK::LapHeader& header);
    void onCarListChanged(const TLM::SDK::LivePluginInfo& pluginInfo);
    void onSample(const TLM::SDK::Sample& sample);
    void onSamples(const QList<TLM::SDK::Sample>& samples);
    void onSessionInfo();
    void onMessage(const QString& message);
    void onProgress(int percent);
    void showStatus();

    Console& m_console;
    host::CarList m_cars;
    host::TickMeter m_ticks;
    QTimer m_statusTimer;
    int m_laps = 0;
    int m_connections = 0;
};

}  // namespace rataip::monitor
