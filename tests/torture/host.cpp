#include "tests/torture/host.h"

#include <QMetaObject>

namespace torture {

using TLM::SDK::DataEmitter;
using TLM::SDK::Lap;
using TLM::SDK::Sample;

namespace {

HandedLap summaryOf(const Lap& lap) {
    HandedLap handed{.car = lap.carId().toInt(),
                     .isOwnCar = lap.detailedTelemetry(),
                     .completed = lap.completed()};
    const auto found = lap.channels().constFind(QStringLiteral("sessiontick"));
    if (found == lap.channels().cend() || (*found)->samples.isEmpty()) {
        return handed;
    }
    const QList<double>& ticks = (*found)->samples;
    handed.lastTick = static_cast<long long>(ticks.last());
    for (qsizetype i = 1; i < ticks.size(); ++i) {
        if (!(ticks.at(i - 1) < ticks.at(i))) {
            handed.foreignSamples = static_cast<int>(i);
        }
    }
    handed.firstTick = static_cast<long long>(ticks.at(handed.foreignSamples));
    return handed;
}

}  // namespace

Host::Host(const QString& pluginFile) : m_loader(pluginFile), m_object(m_loader.instance()) {
    m_source = qobject_cast<TLM::SDK::PluginInterfaceLive*>(m_object.get());
    if (m_source != nullptr) {
        listen();
        m_source->initialize();
    }
}

void Host::tick() {
    QMetaObject::invokeMethod(m_object.get(), "tick", Qt::DirectConnection);
}

void Host::listen() {
    const DataEmitter* const emitter = m_source->dataEmitter();
    QObject::connect(emitter, &DataEmitter::sendConnected, [this] {
        ++m_connections;
        m_connectedAt = Clock::now();
    });
    QObject::connect(emitter, &DataEmitter::sendDisconnected, [this] {
        ++m_disconnections;
        m_disconnectedAt = Clock::now();
    });
    QObject::connect(emitter, &DataEmitter::sendTelemetryLap,
                     [this](const QSharedPointer<Lap>& lap) { take(*lap); });
    QObject::connect(emitter, &DataEmitter::sendSamples,
                     [this](const QList<Sample>& samples) { take(samples); });
}

void Host::take(const Lap& lap) {
    m_strays += m_source->isConnected() ? 0 : 1;
    if (m_ledger != nullptr && !lap.isEmpty()) {
        m_ledger->hand(summaryOf(lap));
    }
}

void Host::take(const QList<Sample>& samples) {
    m_strays += m_source->isConnected() ? 0 : 1;
    ++m_snapshots;
    bool isNumber = false;
    const long long tick =
        samples.first().value(QStringLiteral("sessiontick")).value.toLongLong(&isNumber);
    m_newestTick = isNumber ? std::optional(tick) : std::nullopt;
}

}  // namespace torture
