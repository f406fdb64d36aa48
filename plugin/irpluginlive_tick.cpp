#include "irsdk/allocation.h"
#include "plugin/irpluginlive.h"
#include "sdk/lap.h"
#include "sdk/sample.h"

#include <QScopeGuard>

using namespace Qt::StringLiterals;
using TLM::SDK::Lap;
using TLM::SDK::Sample;

namespace {

// Ticks in a row that may pass without a snapshot.
constexpr qint32 kToleratedMisses = 100;

}  // namespace

void iRPluginLive::tick() {
    // A slot of the host may run an event loop, and so the timer, in the middle of a tick.
    if (!connected || isTicking) {
        return;
    }
    const ConnectionGuard guard(*this);
    isTicking = true;
    const auto endTick = qScopeGuard([this, &guard] {
        if (!guard.isDeleted()) {
            isTicking = false;
        }
    });

    const bool hadMemory = irsdk::tryAllocate([&] { takeTick(guard); });
    if (guard.isSameConnection() && (!hadMemory || irsdk_lastError() == irsdk_Error::OutOfMemory)) {
        endForWantOfMemory();
    }
}

void iRPluginLive::takeTick(const ConnectionGuard& guard) {
    // Outlives a connection on purpose: after "Sim is down" the next connection ends with its first
    // tick if that finds nothing new either.
    static qint32 bytesNotReady = 0;

    if (!irsdk_waitForDataReady(tickWaitMs, dataBuffer.data(), dataBufferLength())) {
        if (++bytesNotReady > kToleratedMisses) {
            reportSimulatorDown(guard);
        }
    } else if (processSnapshot(guard)) {
        bytesNotReady = 0;
    }
}

void iRPluginLive::reportSimulatorDown(const ConnectionGuard& guard) {
    logFailure(irsdk_lastError());
    if (guard.isSameConnection()) {
        message(u"Sim is down"_s, 0);
    }
    if (guard.isSameConnection()) {
        disconnectFromSource();
    }
}

bool iRPluginLive::processSnapshot(const ConnectionGuard& guard) {
    irsdk_header header{};
    if (!irsdk_copyHeader(header) || dataBuffer.empty()) {
        return false;
    }
    // A copy, because a slot of the host may cause the buffer to be resized before the tick is
    // over. Only up to the end of the snapshot: the buffer may be longer, with old bytes of a
    // longer one.
    snapshot.assign(dataBuffer.begin(), dataBuffer.begin() + irsdk_getDataLength());
    refreshSessionInfo(header);
    updateCarList();
    if (!guard.isSameConnection()) {
        return false;
    }
    if (!irsdk_copyVarHeaders(varHeaders)) {
        return false;
    }
    header.numVars = static_cast<qint32>(varHeaders.size());
    reader->prepareTick();
    reader->getRawData(&header, varHeaders.data(), snapshot.data(),
                       static_cast<qint64>(snapshot.size()));
    reader->processData();
    return guard.isSameConnection() && deliver(guard);
}

void iRPluginLive::refreshSessionInfo(const irsdk_header& header) {
    int update = 0;
    // If the text keeps changing while it is copied, the next tick tries again.
    if (header.sessionInfoUpdate != lastSessionInfoUpdate &&
        irsdk_copySessionInfoStr(sessionInfo, update)) {
        lastSessionInfoUpdate = update;
        reader->setYaml(sessionInfo.c_str());
    }
}

bool iRPluginLive::deliver(const ConnectionGuard& guard) {
    const QList<Sample>& samples = sampleLists.fill(*reader);
    for (int car = 0; car < iRTelemetryReader::kSimulatorCars; ++car) {
        if (reader->isLapReady(car)) {
            handOverLap(car);
            if (!guard.isSameConnection()) {
                return false;
            }
        }
    }
    emit emitter.sendSamples(samples);
    if (!guard.isDeleted()) {
        sampleLists.release();
    }
    return true;
}

void iRPluginLive::handOverLap(int car) {
    const QSharedPointer<Lap> lap = reader->lap(car);
    lap->setPlugin(pluginName());
    lap->setSource(sourceName());
    emit emitter.sendTelemetryLap(lap);
}
