#pragma once

#include "sdk/lap.h"
#include "sdk/lapheader.h"
#include "sdk/liveplugininfo.h"
#include "sdk/sample.h"
#include "sdk/sessioninfo.h"

#include <QList>
#include <QObject>
#include <QSharedPointer>
#include <QString>

namespace TLM::SDK {

/**
 * Everything a live plugin delivers, as signals that the host connects to. The plugin calls nothing
 * of the host's.
 *
 * All types that travel here are copyable values or shared pointers, registered with Qt when the
 * first emitter is made, so that connections may be queued to another thread.
 *
 * The order of the signals is part of the interface: hosts may hold their indices. Types are
 * spelled with their namespaces because Qt's meta-object system compares the spelling.
 *
 * A plugin need not send every signal. The plugin rataip sends eight of the twelve; it never sends
 * sendTelemetryLapHeader(), sendSample(), sendSessionInfo() and sendProgress(). In each tick it
 * sends, in this order: the car list if it has changed, each lap that has just ended, by slot, and
 * then the samples. So a lap comes before the samples of its tick.
 */
class DataEmitter : public QObject {
    Q_OBJECT

public:
    explicit DataEmitter(QObject* parent = nullptr);

signals:
    /** The source delivers from now on. rataip: within connectToSource(). */
    void sendConnected();
    /**
     * The source delivers no longer. rataip: when the host disconnects, and by itself after 101
     * ticks without data, some two seconds, or when there is not enough memory for the data; never
     * when the plugin object is deleted.
     */
    void sendDisconnected();
    /** An attempt to connect failed. rataip makes none of itself: the host tries again. */
    void sendNotConnected();
    /**
     * Answer to PluginInterfaceLive::checkConnectionAvailability(). rataip: none while connected.
     */
    void sendConnectivityAvailable(bool available);
    /**
     * A finished lap, which the receivers share among each other. The source has let go of it: it
     * neither changes nor reads it any more.
     *
     * rataip sends every lap of every car, also those that were cut short. A lap without a time has
     * the lap time 59:59.000. A lap without samples comes too: its isEmpty() is true, its lap time
     * is null, and it does not name its car.
     */
    void sendTelemetryLap(QSharedPointer<TLM::SDK::Lap>);
    /** A lap without its channels. rataip: never. */
    void sendTelemetryLapHeader(const TLM::SDK::LapHeader& header);
    /**
     * The cars offered have changed; the list is whole each time. rataip: from initialize(), and
     * then whenever a name or the status of any car has changed, at most once a tick.
     */
    void sendCarListChanged(const TLM::SDK::LivePluginInfo& pluginInfo);
    /** One car at one instant. rataip: never. */
    void sendSample(const TLM::SDK::Sample& sample);
    /**
     * All cars at one instant. rataip: 64 samples in the order of the slots, once for each of the
     * simulator's ticks that it takes. These are 60 a second; it takes at most 100 a second, and
     * the value "sessiontick" tells how many were missed.
     */
    void sendSamples(QList<TLM::SDK::Sample> samples);
    /** A session begins. rataip: never. */
    void sendSessionInfo(TLM::SDK::SessionInfo sessionInfo);
    /**
     * A line for the user. `verbose` is its level of detail: 0 is for what everybody should see,
     * and the larger it is, the fewer want to. rataip sends "Connected", "Disconnected" and "Sim is
     * down", all with 0.
     */
    void sendMessage(const QString& message, int verbose);
    /** Progress of a long operation, 0 to 100. rataip: never. */
    void sendProgress(int percent);
};

}  // namespace TLM::SDK
