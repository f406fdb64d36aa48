#include "irsdk/allocation.h"
#include "plugin/connectionguard.h"
#include "plugin/irpluginlive.h"

#include <QLoggingCategory>

using namespace Qt::StringLiterals;

namespace {

Q_LOGGING_CATEGORY(linkLog, "rataip.link")

/** A simulator that is not there is everyday life and not worth a line. */
bool isWorthALine(irsdk_Error error) {
    return error != irsdk_Error::None && error != irsdk_Error::NoBlock &&
           error != irsdk_Error::NoEvent;
}

}  // namespace

void iRPluginLive::connectToSource() {
    if (connected) {
        return;
    }
    if (isInitialized() && awaitFreshData()) {
        startConnection();
        return;
    }
    emit emitter.sendNotConnected();
}

bool iRPluginLive::awaitFreshData() {
    irsdk_Error error = makeRoomForSnapshots();
    if (error == irsdk_Error::None) {
        if (irsdk_waitForDataReady(connectWaitMs, dataBuffer.data(), dataBufferLength())) {
            loggedError = irsdk_Error::None;
            return true;
        }
        error = irsdk_lastError();
    }
    logFailure(error);
    // Also after half an opening. On Linux what was opened may belong to a simulator that is gone
    // by the next attempt; on Windows it would live on under its name, in the way of the next one.
    irsdk_shutdown();
    return false;
}

irsdk_Error iRPluginLive::makeRoomForSnapshots() {
    irsdk_header header{};
    if (!irsdk_startup() || !irsdk_copyHeader(header) || header.bufferLength <= 0) {
        return irsdk_lastError();
    }
    return resizeDataBuffer(header.bufferLength) ? irsdk_Error::None : irsdk_Error::OutOfMemory;
}

/** Also makes room for the copy that each tick takes, so that a tick cannot fail for want of it. */
bool iRPluginLive::resizeDataBuffer(int length) {
    if (length == dataBufferLength()) {
        return true;
    }
    dataBuffer.clear();
    const auto bytes = static_cast<std::size_t>(length);
    return irsdk::hasMemoryTo([this, bytes] {
        snapshot.reserve(bytes);
        dataBuffer.assign(bytes, '\0');
    });
}

int iRPluginLive::dataBufferLength() const {
    return static_cast<int>(dataBuffer.size());
}

void iRPluginLive::startConnection() {
    int update = 0;
    if (irsdk_copySessionInfoStr(sessionInfo, update)) {
        reader.setYaml(sessionInfo.c_str());
    }
    connected = true;
    ++connectionNumber;
    const ConnectionGuard guard(this, connectionNumber);
    emit emitter.sendConnected();
    if (guard.isSameConnection()) {
        updateCarList();
    }
    if (guard.isSameConnection()) {
        message(u"Connected"_s, 0);
    }
    if (guard.isSameConnection()) {
        timer->start();
    }
}

void iRPluginLive::disconnectFromSource() {
    if (!connected) {
        return;
    }
    closeConnection();
    const ConnectionGuard guard(this, connectionNumber);
    emit emitter.sendDisconnected();
    if (!guard.isDeleted()) {
        message(u"Disconnected"_s, 0);
    }
}

/** Done before the host hears of it, because a slot of the host may begin the next connection. */
void iRPluginLive::closeConnection() {
    endConnection();
    closeOpenLaps();
    irsdk_shutdown();
}

void iRPluginLive::endConnection() {
    timer->stop();
    connected = false;
    ++connectionNumber;
}

void iRPluginLive::closeOpenLaps() {
    for (int car = 0; car < iRTelemetryReader::simulatorCars; ++car) {
        // The last tick's laps are the host's: one of its threads may be writing them to disk.
        reader.leaveReadyLap(car);
        reader.processLap(car, false);
    }
}

void iRPluginLive::checkConnectionAvailability() {
    if (connected) {
        return;
    }
    const bool available = isInitialized() && awaitFreshData();
    if (available) {
        irsdk_shutdown();
    }
    emit emitter.sendConnectivityAvailable(available);
}

void iRPluginLive::logFailure(irsdk_Error error) {
    if (isWorthALine(error) && error != loggedError) {
        qCWarning(linkLog) << "No data from the simulator:" << irsdk_errorText(error);
        loggedError = error;
    }
}
