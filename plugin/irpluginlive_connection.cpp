#include "irsdk/allocation.h"
#include "plugin/irpluginlive.h"

#include <QLoggingCategory>

using namespace Qt::StringLiterals;

namespace {

Q_LOGGING_CATEGORY(linkLog, "rataip.link")

/** A simulator that does not run is the normal case and not logged. */
bool isWorthALine(irsdk_Error error) {
    return error != irsdk_Error::None && error != irsdk_Error::NoBlock &&
           error != irsdk_Error::NoEvent;
}

/** Not through a stream: that writes in its destructor, which cannot throw when memory runs out. */
void writeFailure(irsdk_Error error) {
    static_cast<void>(irsdk::tryAllocate(
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
    const ConnectionGuard guard(*this);
    logFailure(*failure);
    if (guard.isSameConnection()) {
        static_cast<void>(irsdk::tryAllocate([this] { emit emitter.sendNotConnected(); }));
    }
}

iRPluginLive::Failure iRPluginLive::openForConnection() {
    if (refusesConnections) {
        return irsdk_Error::None;
    }
    const Failure failure = awaitFreshData();
    return failure ? failure : readSession();
}

/** The error is None when a simulator is there but silent. Closes the link after a failure. */
iRPluginLive::Failure iRPluginLive::awaitFreshData() {
    if (!isInitialized()) {
        return irsdk_Error::NoBlock;
    }
    irsdk_Error error = makeRoomForSnapshots();
    if (error == irsdk_Error::None) {
        if (irsdk_waitForDataReady(connectWaitMs, dataBuffer.data(), dataBufferLength())) {
            // The memory suffices only when there is enough for the whole connection.
            if (loggedError != irsdk_Error::OutOfMemory) {
                loggedError = irsdk_Error::None;
            }
            return std::nullopt;
        }
        error = irsdk_lastError();
    }
    // Also when only some objects are open. On Linux they may belong to a simulator that is gone by
    // the next attempt; on Windows an open object keeps its name and blocks the next simulator.
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

/** Also reserves room for the copy that each tick takes, so that a tick cannot fail to get it. */
bool iRPluginLive::resizeDataBuffer(int length) {
    if (length == dataBufferLength()) {
        return true;
    }
    giveBuffersBack();
    const auto bytes = static_cast<std::size_t>(length);
    const bool hadMemory = irsdk::tryAllocate([this, bytes] {
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

/** Closes the link after a failure. */
iRPluginLive::Failure iRPluginLive::readSession() {
    const bool hadMemory = irsdk::tryAllocate([this] {
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
    const ConnectionGuard guard(*this);
    if (!irsdk::tryAllocate([&] { announceConnection(guard); }) && guard.isSameConnection()) {
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
    const ConnectionGuard guard(*this);
    static_cast<void>(irsdk::tryAllocate([&] {
        emit emitter.sendDisconnected();
        if (!guard.isDeleted()) {
            message(u"Disconnected"_s, 0);
        }
        // Last, because a log handler may connect: this connection must have ended by then.
        reader::writeDebugLines(debugLines);
    }));
}

/**
 * Called before the host is told, because a slot of the host may begin the next connection. Returns
 * the debug lines about the closed laps.
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
    if (reader && !irsdk::tryAllocate([&] { debugLines = reader->closeOpenLaps(); })) {
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
    const ConnectionGuard guard(*this);
    logFailure(failure.value_or(irsdk_Error::None));
    if (guard.isSameConnection()) {
        static_cast<void>(irsdk::tryAllocate(
            [&] { emit emitter.sendConnectivityAvailable(!failure.has_value()); }));
    }
}

/**
 * Releases the memory that the simulator's data take. The reader goes as a whole: a part of it that
 * ran out of memory may be half changed.
 */
void iRPluginLive::giveMemoryBack() {
    reader.reset();
    lastSessionInfoUpdate = kNoSessionInfoSeen;
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
    // A slot may have deleted this object: no member is used from here on.
    if (isNews) {
        writeFailure(irsdk_Error::OutOfMemory);
    }
}

/** Callers check their guard afterwards: the message handler is the host's. */
void iRPluginLive::logFailure(irsdk_Error error) {
    if (noteFailure(error)) {
        writeFailure(error);
    }
}

/** Whether to log the error: only the first of equal ones in a row. */
bool iRPluginLive::noteFailure(irsdk_Error error) {
    const bool isNews = isWorthALine(error) && error != loggedError;
    if (isNews) {
        loggedError = error;
    }
    return isNews;
}
