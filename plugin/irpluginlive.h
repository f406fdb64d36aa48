#pragma once

#include "irsdk/irsdk.h"
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
 * Failures are reported by signals only. Calls in the wrong state (connecting twice, disconnecting
 * twice, probing while connected, anything before initialize()) do nothing or report that there is
 * no connection. The simulator may end, hang or return at any moment: after 101 ticks without data
 * the plugin says "Sim is down" and disconnects. A slot or a message handler of the host may call
 * any operation of this object, run an event loop of its own or delete this object: the rest of a
 * tick is dropped once its connection has ended, and ticks never nest. When there is not enough
 * memory for what the simulator publishes, the connection is refused or ends in an orderly way, one
 * line of the log says so, and all the simulator's data are released. No exception leaves this
 * object.
 *
 * The object MUST be used on the thread that owns it, and there MUST be only one in a process,
 * because a process has one link to the simulator.
 */
class iRPluginLive : public QObject, public TLM::SDK::PluginInterfaceLive {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID TLM_SDK_PLUGININTERFACELIVE_IID)
    Q_INTERFACES(TLM::SDK::PluginInterfaceLive)

public:
    iRPluginLive();

    /** Closes the link without a signal to the host. */
    ~iRPluginLive() override;

    /**
     * Sets everything up and announces 64 cars with the ids "0" to "63". A second call disconnects
     * first and starts over. If a slot answers that by connecting, this connection is ended with
     * its signals too; if it connects once more, it is refused.
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
    /** Processes at most one new snapshot. Called by the timer while connected. */
    void tick();

    /** Announces the car list when a name or a status in it has changed. */
    void updateCarList();

private:
    /**
     * Tells, after a signal or a line of the log, whether the work that emitted it may go on: a
     * slot or the message handler of the host may have disconnected the plugin, reconnected or
     * deleted it. Takes no memory, so that it can be made when there is none.
     */
    class ConnectionGuard {
    public:
        explicit ConnectionGuard(const iRPluginLive& plugin)
            : m_plugin(plugin.self), m_expected(plugin.connectionNumber) {}

        [[nodiscard]] bool isDeleted() const { return m_plugin.isNull(); }
        [[nodiscard]] bool isSameConnection() const {
            return !isDeleted() && m_plugin->connectionNumber == m_expected;
        }

    private:
        QPointer<const iRPluginLive> m_plugin;
        quint64 m_expected;
    };

    [[nodiscard]] bool isInitialized() const;
    void setUp(const ConnectionGuard& guard);
    void endAnnouncedConnections(const ConnectionGuard& guard);
    void createTimer();
    void refreshCarList();
    void announceCarList();
    void closeSilently();

    // Why something failed; empty when it did not.
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

    static constexpr int kNoSessionInfoSeen = -1;

    // Present from initialize() on, except between running out of memory and the next connection.
    std::optional<iRTelemetryReader> reader;
    QTimer* timer = nullptr;  // a child of this object
    int tickWaitMs = 0;
    int connectWaitMs = 0;
    int lastSessionInfoUpdate = kNoSessionInfoSeen;
    std::vector<char> dataBuffer;

    // Work space of a tick, kept so that a tick takes no memory.
    std::vector<char> snapshot;
    std::vector<irsdk_varHeader> varHeaders;
    std::string sessionInfo;
    SampleLists sampleLists;

    quint64 connectionNumber = 0;  // changes with each connection and each disconnection
    bool isTicking = false;
    bool refusesConnections = false;
    irsdk_Error loggedError = irsdk_Error::None;    // of the last line, until it is over
    const QPointer<const iRPluginLive> self{this};  // guards copy it, which takes no memory
};
