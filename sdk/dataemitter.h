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
 */
class DataEmitter : public QObject {
    Q_OBJECT

public:
    explicit DataEmitter(QObject* parent = nullptr);

signals:
    /** The source delivers from now on. */
    void sendConnected();
    /** The source delivers no longer. */
    void sendDisconnected();
    /** An attempt to connect failed. */
    void sendNotConnected();
    /** Answer to PluginInterfaceLive::checkConnectionAvailability(). */
    void sendConnectivityAvailable(bool available);
    /**
     * A finished lap, which the receivers share among each other. The source has let go of it: it
     * neither changes nor reads it any more. Its last owner MUST be gone before the plugin's
     * library is unloaded, which holds its code.
     */
    void sendTelemetryLap(QSharedPointer<TLM::SDK::Lap>);
    /** A lap without its channels. */
    void sendTelemetryLapHeader(TLM::SDK::LapHeader const& header);
    /** The cars offered have changed. */
    void sendCarListChanged(TLM::SDK::LivePluginInfo const& pluginInfo);
    /** One car at one instant. */
    void sendSample(TLM::SDK::Sample const& sample);
    /** All cars at one instant. */
    void sendSamples(QList<TLM::SDK::Sample> samples);
    void sendSessionInfo(TLM::SDK::SessionInfo sessionInfo);
    /** A line for the user; `verbose` is its level of detail, 0 for what everybody should see. */
    void sendMessage(QString const& message, int verbose);
    /** Progress of a long operation, 0 to 100. */
    void sendProgress(int percent);
};

}  // namespace TLM::SDK
