#include "tests/plugin/hostrecorder.h"

#include <utility>

using namespace Qt::StringLiterals;
using TLM::SDK::DataEmitter;
using TLM::SDK::Lap;
using TLM::SDK::LivePluginInfo;
using TLM::SDK::Sample;

HostRecorder::HostRecorder(DataEmitter* emitter)
    : connected(emitter, &DataEmitter::sendConnected),
      disconnected(emitter, &DataEmitter::sendDisconnected),
      notConnected(emitter, &DataEmitter::sendNotConnected),
      connectivityAvailable(emitter, &DataEmitter::sendConnectivityAvailable),
      telemetryLaps(emitter, &DataEmitter::sendTelemetryLap),
      telemetryLapHeaders(emitter, &DataEmitter::sendTelemetryLapHeader),
      carLists(emitter, &DataEmitter::sendCarListChanged),
      sample(emitter, &DataEmitter::sendSample),
      samples(emitter, &DataEmitter::sendSamples),
      sessionInfo(emitter, &DataEmitter::sendSessionInfo),
      messages(emitter, &DataEmitter::sendMessage),
      progress(emitter, &DataEmitter::sendProgress) {
    listenTo(emitter);
}

void HostRecorder::listenTo(DataEmitter* emitter) {
    const auto listen = [this, emitter](auto signal, auto slot) {
        QObject::connect(emitter, signal, &m_context, slot);
    };
    listen(&DataEmitter::sendConnected, [this] { note(u"Connected"_s); });
    listen(&DataEmitter::sendDisconnected, [this] { note(u"Disconnected"_s); });
    listen(&DataEmitter::sendNotConnected, [this] { note(u"NotConnected"_s); });
    listen(&DataEmitter::sendConnectivityAvailable, [this](bool available) {
        note(u"ConnectivityAvailable "_s + (available ? u"true"_s : u"false"_s));
    });
    listen(&DataEmitter::sendTelemetryLap,
           [this](const QSharedPointer<Lap>& lap) { note(u"TelemetryLap "_s + lap->carId()); });
    listen(&DataEmitter::sendTelemetryLapHeader, [this] { note(u"TelemetryLapHeader"_s); });
    listen(&DataEmitter::sendCarListChanged, [this](const LivePluginInfo& info) {
        note(u"CarListChanged "_s + QString::number(info.cars.size()));
    });
    listen(&DataEmitter::sendSample, [this] { note(u"Sample"_s); });
    listen(&DataEmitter::sendSamples, [this](const QList<Sample>& list) {
        note(u"Samples "_s + QString::number(list.size()));
    });
    listen(&DataEmitter::sendSessionInfo, [this] { note(u"SessionInfo"_s); });
    listen(&DataEmitter::sendMessage, [this](const QString& message, int verbose) {
        note(u"Message %1 (%2)"_s.arg(message).arg(verbose));
    });
    listen(&DataEmitter::sendProgress, [this] { note(u"Progress"_s); });
}

void HostRecorder::note(const QString& entry) {
    m_heard.append(entry);
    if (m_reaction && entry == m_awaited) {
        const std::function<void()> reaction = std::exchange(m_reaction, {});
        reaction();
    }
}

void HostRecorder::reactTo(const QString& entry, std::function<void()> reaction) {
    m_awaited = entry;
    m_reaction = std::move(reaction);
}

QStringList HostRecorder::events() const {
    QStringList events;
    for (const QString& entry : m_heard) {
        if (!entry.startsWith("CarListChanged"_L1) && !entry.startsWith("Samples"_L1)) {
            events.append(entry);
        }
    }
    return events;
}

int HostRecorder::count(const QString& entry) const {
    return static_cast<int>(m_heard.count(entry));
}

void HostRecorder::forget() {
    m_heard.clear();
    for (QSignalSpy* spy :
         {&connected, &disconnected, &notConnected, &connectivityAvailable, &telemetryLaps,
          &telemetryLapHeaders, &carLists, &sample, &samples, &sessionInfo, &messages, &progress}) {
        spy->clear();
    }
}

QList<QSharedPointer<Lap>> HostRecorder::laps() const {
    QList<QSharedPointer<Lap>> laps;
    for (const QList<QVariant>& arguments : telemetryLaps) {
        laps.append(arguments.at(0).value<QSharedPointer<Lap>>());
    }
    return laps;
}

LivePluginInfo HostRecorder::lastCarList() const {
    return carLists.isEmpty() ? LivePluginInfo() : carLists.last().at(0).value<LivePluginInfo>();
}

QList<Sample> HostRecorder::lastSamples() const {
    return samples.isEmpty() ? QList<Sample>() : samples.last().at(0).value<QList<Sample>>();
}
