#pragma once

#include "sdk/dataemitter.h"

#include <QList>
#include <QSharedPointer>
#include <QSignalSpy>
#include <QString>
#include <QStringList>

#include <functional>

/**
 * Records a plugin's signals as a host: one spy per signal for the arguments, and one list of all
 * emissions in order. The list has the signals' names without "send", and their main argument:
 *
 *     Connected, Disconnected, NotConnected, ConnectivityAvailable true, TelemetryLap 7 (the car),
 *     CarListChanged 64 (cars), Samples 64, Message [iRacing plugin] Connected (0)
 *
 * Must be created before other slots that act on the signals, so that it records each emission
 * before the reaction to it.
 */
class HostRecorder {
public:
    explicit HostRecorder(TLM::SDK::DataEmitter* emitter);

    HostRecorder(const HostRecorder&) = delete;
    HostRecorder& operator=(const HostRecorder&) = delete;

    /** All entries, in the order of the emissions. */
    [[nodiscard]] const QStringList& heard() const { return m_heard; }

    /** The same without car lists and samples, which may come with every tick. */
    [[nodiscard]] QStringList events() const;

    [[nodiscard]] int count(const QString& entry) const;

    /** Adds an entry that is not a signal. */
    void note(const QString& entry);

    /** Calls `reaction` once, inside the slot, at the next such entry. */
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
