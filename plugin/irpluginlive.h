#pragma once

#include "irsdk/irsdk.h"
#include "plugin/connectionguard.h"
#include "plugin/samplelists.h"
#include "reader/irtelemetryreader.h"
#include "sdk/plugininterfacelive.h"

#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QTimer>

#include <optional>
#include <string>
#include <vector>

/**
 * The object that a host loads: it connects to the simulator and hands over cars, samples and laps.
 *
 * Failures are told by signals alone. Calls in the wrong state (connecting twice, disconnecting
 * twice, probing while connected, anything before initialize()) do nothing or report that there is
 * no connection. The simulator may end, hang or return at any moment: after 101 ticks without data
 * the plugin says "Sim is down" and disconnects. A slot or a message handler of the host may call
 * any operation of this object, run an event loop of its own or delete this object: what is left of
 * a tick is dropped once its connection has ended, and a tick never runs within a tick. Where there
 * is not enough memory for what the simulator publishes, the connection ends or is refused in
 * order, one line of the log says so, and everything that was kept of the simulator is let go of;
 * no exception leaves this object.
 *
 * The object MUST be used on the thread that owns it, and there MUST be only one in a process,
 * because the link to the simulator is one a process.
 */
class iRPluginLive : public QObject, public TLM::SDK::PluginInterfaceLive {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID TLM_SDK_PLUGININTERFACELIVE_IID)
    Q_INTERFACES(TLM::SDK::PluginInterfaceLive)

public:
    iRPluginLive();

    /** Closes the link without a word to the host. */
    ~iRPluginLive() override;

    /**
     * Sets everything up and announces 64 cars with the ids "0" to "63". Called again, it
     * disconnects first and starts afresh. A connection with which a slot answers that is ended in
     * words, too; a slot that answers once more is refused.
     */
    void initialize() override;

    /** The plugin has no settings: both do nothing. */
    void saveSettings(const QString& path) override;
    void loadSettings(const QString& path) override;

    QString sourceName() const override;
    QString pluginName() const override;
    QString pluginVersion() const override;

    void checkConnectionAvailability() override;
    void connectToSource() override;
    void disconnectFromSource() override;

public slots:
    /** Takes at most one new snapshot. Called by the timer while connected. */
    void tick();

    /** Announces the car list when a name or a status in it changed. */
    void updateCarList();

private:
    [[nodiscard]] ConnectionGuard guardConnection() const;
    [[nodiscard]] bool isInitialized() const;
    void setUp(const ConnectionGuard& guard);
    void endAnnouncedConnections(const ConnectionGuard& guard);
    void createTimer();
    void refreshCarList();
    void announceCarList();
    void closeSilently();

    // Why something failed; nothing when it did not.
    using Failure = std::optional<irsdk_Error>;

    [[nodiscard]] Failure openForConnection();
    [[nodiscard]] Failure awaitFreshData();
    [[nodiscard]] irsdk_Error makeRoomForSnapshots();
    [[nodiscard]] bool resizeDataBuffer(int length);
    void giveBuffersBack();
    [[nodiscard]] int dataBufferLength() const;
    [[nodiscard]] Failure readSession();
    void startConnection();
    void announceConnection(const ConnectionGuard& guard);
    void endConnection();
    [[nodiscard]] QStringList closeConnection();
    [[nodiscard]] QStringList closeOpenLaps();
    void giveMemoryBack();
    void endForWantOfMemory();
    void logFailure(irsdk_Error error);
    [[nodiscard]] bool noteFailure(irsdk_Error error);
    iRTelemetryReader& readerInUse();

    void takeTick(const ConnectionGuard& guard);
    void reportSimulatorDown(const ConnectionGuard& guard);
    [[nodiscard]] bool processSnapshot(const ConnectionGuard& guard);
    void refreshSessionInfo(const irsdk_header& header);
    [[nodiscard]] bool deliver(const ConnectionGuard& guard);
    void handOverLap(int car);

    static constexpr int noSessionInfoSeen = -1;

    // From initialize() on, but for the time from a want of memory to the next connection.
    std::optional<iRTelemetryReader> reader;
    QTimer* timer = nullptr;  // a child of this object
    int tickWaitMs = 0;
    int connectWaitMs = 0;
    int lastSessionInfoUpdate = noSessionInfoSeen;
    std::vector<char> dataBuffer;

    // Work space of a tick, kept so that a tick takes no memory.
    std::vector<char> snapshot;
    std::vector<irsdk_varHeader> varHeaders;
    std::string sessionInfo;
    SampleLists sampleLists;

    quint64 connectionNumber = 0;  // another one after each connection and each disconnection
    bool isTicking = false;
    bool refusesConnections = false;
    irsdk_Error loggedError = irsdk_Error::None;  // of the last line, until it is over
    const QPointer<QObject> self{this};           // what guards are copied from
};
