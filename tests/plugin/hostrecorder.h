#pragma once

#include "sdk/dataemitter.h"

#include <QList>
#include <QSharedPointer>
#include <QSignalSpy>
#include <QString>
#include <QStringList>

#include <functional>

/**
 * Hears a plugin as a host does: one spy a signal for the arguments, and one list for the order
 * over all signals. Signals are written to the list without their "send" and with what tells them
 * apart:
 *
 *     Connected, Disconnected, NotConnected, ConnectivityAvailable true, TelemetryLap 7 (the car),
 *     CarListChanged 64 (cars), Samples 64, Message [iRacing plugin] Connected (0)
 *
 * Must be made before anything else is connected that acts on the signals: it then hears each
 * emission before the reaction to it.
 */
class HostRecorder {
public:
    explicit HostRecorder(TLM::SDK::DataEmitter* emitter);

    HostRecorder(const HostRecorder&) = delete;
    HostRecorder& operator=(const HostRecorder&) = delete;

    /** Everything in the order of the emissions. */
    [[nodiscard]] const QStringList& heard() const { return m_heard; }

    /** The same without car lists and samples, of which every tick may bring some. */
    [[nodiscard]] QStringList events() const;

    [[nodiscard]] int count(const QString& entry) const;

    /** Adds to the list what was heard in another way than by a signal. */
    void note(const QString& entry);

    /** Acts once, inside the slot, when this entry is heard for the next time. */
    void reactTo(const QString& entry, std::function<void()> reaction);

    /** Empties the list and the spies. */
    void forget();

    [[nodiscard]] QList<QSharedPointer<TLM::SDK::Lap>> laps() const;
    [[nodiscard]] TLM::SDK::LivePluginInfo lastCarList() const;
    [[nodiscard]] QList<TLM::SDK::Sample> lastSamples() const;

    QSignalSpy connected;
    QSignalSpy disconnected;
    QSignalSpy notConnected;
    QSignalSpy connectivityAvailable;
    QSignalSpy telemetryLaps;
    QSignalSpy telemetryLapHeaders;
    QSignalSpy carLists;
    QSignalSpy sample;
    QSignalSpy samples;
    QSignalSpy sessionInfo;
    QSignalSpy messages;
    QSignalSpy progress;

private:
    void listenTo(TLM::SDK::DataEmitter* emitter);

    QObject m_context;
    QStringList m_heard;
    QString m_awaited;
    std::function<void()> m_reaction;
};
