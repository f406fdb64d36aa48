#include "irsdk/allocation.h"
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

/** Not by a stream: that writes in its destructor, out of which no exception can come. */
void writeFailure(irsdk_Error error) {
    static_cast<void>(irsdk::hasMemoryTo(
        [error] { qCWarning(linkLog, "No data from the simulator: %s", irsdk_errorText(error)); }));
}

}  // namespace

void iRPluginLive::connectToSource() {
    if (connected) {
        return;
    }
    const Failure failure = openForConnection();
    if (!failure) {
        startConnection();
        return;
    }
    const ConnectionGuard guard = guardConnection();
    logFailure(*failure);
    if (guard.isSameConnection()) {
        static_cast<void>(irsdk::hasMemoryTo([this] { emit emitter.sendNotConnected(); }));
    }
}

iRPluginLive::Failure iRPluginLive::openForConnection() {
    if (refusesConnections) {
        return irsdk_Error::None;
    }
    const Failure failure = awaitFreshData();
    return failure ? failure : readSession();
}

/** The reason is None when a simulator is there and silent. After a failure the link is closed. */
iRPluginLive::Failure iRPluginLive::awaitFreshData() {
    if (!isInitialized()) {
        return irsdk_Error::NoBlock;
    }
    irsdk_Error error = makeRoomForSnapshots();
    if (error == irsdk_Error::None) {
        if (irsdk_waitForDataReady(connectWaitMs, dataBuffer.data(), dataBufferLength())) {
            // A want of memory is over only when all of a connection has found room.
            if (loggedError != irsdk_Error::OutOfMemory) {
                loggedError = irsdk_Error::None;
            }
            return std::nullopt;
        }
        error = irsdk_lastError();
    }
    // Also after half an opening. On Linux what was opened may belong to a simulator that is gone
    // by the next attempt; on Windows it would live on under its name, in the way of the next one.
    irsdk_shutdown();
    return error;
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
    giveBuffersBack();
    const auto bytes = static_cast<std::size_t>(length);
    const bool hadMemory = irsdk::hasMemoryTo([this, bytes] {
        snapshot.reserve(bytes);
        dataBuffer.assign(bytes, '\0');
    });
    if (!hadMemory) {
        giveBuffersBack();
    }
    return hadMemory;
}

void iRPluginLive::giveBuffersBack() {
    dataBuffer = std::vector<char>();
    snapshot = std::vector<char>();
}

int iRPluginLive::dataBufferLength() const {
    return static_cast<int>(dataBuffer.size());
}

/** After a failure the link is closed. */
iRPluginLive::Failure iRPluginLive::readSession() {
    const bool hadMemory = irsdk::hasMemoryTo([this] {
        iRTelemetryReader& current = readerInUse();
        int update = 0;
        if (irsdk_copySessionInfoStr(sessionInfo, update)) {
            current.setYaml(sessionInfo.c_str());
        }
    });
    if (hadMemory && irsdk_lastError() != irsdk_Error::OutOfMemory) {
        return std::nullopt;
    }
    giveMemoryBack();
    irsdk_shutdown();
    return irsdk_Error::OutOfMemory;
}

void iRPluginLive::startConnection() {
    connected = true;
    ++connectionNumber;
    loggedError = irsdk_Error::None;
    const ConnectionGuard guard = guardConnection();
    if (!irsdk::hasMemoryTo([&] { announceConnection(guard); }) && guard.isSameConnection()) {
        endForWantOfMemory();
    }
}

void iRPluginLive::announceConnection(const ConnectionGuard& guard) {
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
    const QStringList debugLines = closeConnection();
    const ConnectionGuard guard = guardConnection();
    static_cast<void>(irsdk::hasMemoryTo([&] {
        emit emitter.sendDisconnected();
        if (!guard.isDeleted()) {
            message(u"Disconnected"_s, 0);
        }
        // A handler that connects must not be heard before the end of this connection.
        reader::writeDebugLines(debugLines);
    }));
}

/**
 * Done before the host hears of it, because a slot of the host may begin the next connection.
 * Returns what the debug log is to tell of the laps that were closed.
 */
QStringList iRPluginLive::closeConnection() {
    endConnection();
    QStringList debugLines = closeOpenLaps();
    irsdk_shutdown();
    return debugLines;
}

void iRPluginLive::endConnection() {
    timer->stop();
    connected = false;
    ++connectionNumber;
}

QStringList iRPluginLive::closeOpenLaps() {
    QStringList debugLines;
    if (reader && !irsdk::hasMemoryTo([&] { debugLines = reader->closeOpenLaps(); })) {
        giveMemoryBack();
    }
    return debugLines;
}

void iRPluginLive::checkConnectionAvailability() {
    if (connected) {
        return;
    }
    const Failure failure = awaitFreshData();
    if (!failure) {
        irsdk_shutdown();
    }
    const ConnectionGuard guard = guardConnection();
    logFailure(failure.value_or(irsdk_Error::None));
    if (guard.isSameConnection()) {
        static_cast<void>(irsdk::hasMemoryTo(
            [&] { emit emitter.sendConnectivityAvailable(!failure.has_value()); }));
    }
}

/**
 * Lets go of whatever the simulator's data take up. The reader goes as a whole: a part that was
 * interrupted for want of memory may be half changed.
 */
void iRPluginLive::giveMemoryBack() {
    reader.reset();
    lastSessionInfoUpdate = noSessionInfoSeen;
    sampleLists = SampleLists();
    sessionInfo = std::string();
    varHeaders = std::vector<irsdk_varHeader>();
    giveBuffersBack();
}

iRTelemetryReader& iRPluginLive::readerInUse() {
    return reader ? *reader : reader.emplace();
}

void iRPluginLive::endForWantOfMemory() {
    const bool isNews = noteFailure(irsdk_Error::OutOfMemory);
    giveMemoryBack();
    disconnectFromSource();
    // By now a slot may have deleted this object.
    if (isNews) {
        writeFailure(irsdk_Error::OutOfMemory);
    }
}

/** A caller looks at its guard afterwards: the log's handler is the host's. */
void iRPluginLive::logFailure(irsdk_Error error) {
    if (noteFailure(error)) {
        writeFailure(error);
    }
}

/** Whether the reason is to be logged: once, however often it is met. */
bool iRPluginLive::noteFailure(irsdk_Error error) {
    const bool isNews = isWorthALine(error) && error != loggedError;
    if (isNews) {
        loggedError = error;
    }
    return isNews;
}
