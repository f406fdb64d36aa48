#pragma once

#include "irsdk/layout.h"
#include "reader/lapcourse.h"
#include "reader/recordercar.h"
#include "reader/samplingplan.h"
#include "reader/sessiondigest.h"
#include "sdk/lap.h"
#include "sdk/sample.h"
#include "yaml/tyamltree.h"

#include <QList>
#include <QSharedPointer>
#include <QString>
#include <QStringList>
#include <QUuid>

#include <optional>

namespace reader {

/**
 * Turns the simulator's snapshots into samples of every car and into laps.
 *
 * Nothing here fails loudly: what a session text or a snapshot lacks leaves the values as they
 * were, numbers that do not parse are 0, and variables that lie outside their buffer are not there.
 * The accessors of one car take a slot from 0 to 63 and do not check it.
 *
 * The reader is the session-info tree: the tree's operations are called on it. It has one
 * RecorderCar for each of the simulator's 64 car slots; the slot number is the simulator's car
 * index. Not thread-safe: every call comes from the thread of the plugin's tick, in this order:
 *
 *     reader.setYaml(text);      // when the simulator rewrote it
 *     reader.updateCarList();
 *     reader.prepareTick();
 *     reader.getRawData(&header, table, snapshot, length);
 *     reader.processData();
 *     std::as_const(reader).sample(car); reader.isLapReady(car); reader.lap(car);
 */
class iRTelemetryReader : public TYamlTree {
public:
    /** Cars that a simulator numbers, from 0 on: the slots of a reader unless it is resized. */
    static constexpr int kSimulatorCars = 64;

    iRTelemetryReader();
    ~iRTelemetryReader() override;

    /**
     * Begins a new connection: 64 car slots again, no own car, no session, not known whether it is
     * a replay. The tree, the table of variable names and what the cars' recorders hold stay.
     *
     * It ends disk loading for the reader but not for the cars, which go on ending their laps by a
     * recording's rules; setDiskLoading(false) ends it for both.
     */
    void initialize();

    /** Sets the number of car slots; the slots that remain keep their contents. */
    void resize(int count);

    [[nodiscard]] int carCount() const { return static_cast<int>(m_cars.size()); }

    /** Whether the values come from a recording on disk; tells every car slot too. */
    void setDiskLoading(bool on);

    /** The user's own car as the session text numbers it, -1 while unknown. May exceed the slots.
     */
    [[nodiscard]] int myCarIdx() const;

    [[nodiscard]] const QString& driverName(int car) const;
    [[nodiscard]] const QString& teamName(int car) const;
    [[nodiscard]] const QString& carName(int car) const;
    [[nodiscard]] const QString& className(int car) const;

    /** The car's TLM::SDK::CarStatus as a number. */
    [[nodiscard]] int status(int car) const;

    /** True for the user's own car alone. */
    [[nodiscard]] bool detailedTelemetry(int car) const;

    /** The recorder of slot `car`, to look at. */
    [[nodiscard]] const RecorderCar& recorderCar(int car) const;

    /**
     * The values of slot `car` in this tick. A sample that was once handed out to be changed is
     * filled the slow way from then on; ask through a constant reader to look only.
     */
    TLM::SDK::Sample& sample(int car);
    [[nodiscard]] const TLM::SDK::Sample& sample(int car) const;

    /**
     * Another number whenever the car record of a sample has changed; none when somebody was given
     * a sample and may change it at any time.
     */
    [[nodiscard]] std::optional<quint64> recordsRevision() const;

    /**
     * Merges the zero-terminated session text into the tree and settles, with the first text that
     * says it, whether this is a replay.
     */
    void setYaml(const char* yaml);

    /** Refreshes own car and names from the tree; true when a name or a status changed. */
    bool updateCarList();

    /**
     * The session's id from its identity text, padded to 32 hexadecimal digits; the null id when
     * the text is longer or holds anything else.
     */
    [[nodiscard]] QUuid sessionId(const QString& id) const;

    /**
     * Whether a new session has begun since the last tick. The identity of a session is learnt when
     * a lap is closed, not with the text, and prepareTick() takes it for the last tick's: a change
     * is told from the first lap closed under it to the end of that tick, and processData() of the
     * next does not see it.
     */
    [[nodiscard]] bool isSessionRestarted() const;

    /**
     * Rolls every car's state over to a new tick and starts the lap after a closed one. So is the
     * session's identity: a change that was learnt in the tick before counts as old from here on.
     */
    void prepareTick();

    /**
     * Puts every variable of a snapshot into the cars' samples. `vars` points at `header->numVars`
     * descriptions and may be null when there are none; `data` is the snapshot of `dataLength`
     * bytes. A variable that does not lie within the snapshot is skipped. Nothing is kept but
     * values.
     */
    void getRawData(const irsdk_header* header, const irsdk_varHeader* vars, const char* data,
                    qint64 dataLength);

    /** The same for a caller that vouches for every offset and count. */
    void getRawData(const irsdk_header* header, const irsdk_varHeader* vars, const char* data);

    /** Moves every car's recording on by the tick whose values getRawData took. */
    void processData();

    /**
     * Puts what the tree says of track, weekend, fuel, driver and session into a lap. The reader
     * learns the session's identity on the way.
     */
    void getSessionInfo(int carIdx, TLM::SDK::Lap* lap);

    /** Derives the channels of a closed lap that the simulator does not deliver. */
    void preprocessLap(int car);

    /** Closes the car's lap, driven to its end or not, and marks it ready, also an empty one. */
    void processLap(int index, bool completed);

    /**
     * Replaces the readings at the start of a lap's channel that are left over from the lap before,
     * back from the first good one, by values that rise with lap distance.
     */
    void normalizeChannelBeginning(int car, const QString& name);

    /** In a replay, drops the running lap time that the replay does not keep. */
    void cleanupLap(int car);

    /**
     * Closes the laps in progress of all cars, for a connection that has ended. A ready lap is let
     * go of as it is: from then on its car has an empty one. Returns what the caller MUST write to
     * the debug log once the connection is closed.
     */
    [[nodiscard]] QStringList closeOpenLaps();

    [[nodiscard]] bool isLapReady(int car) const;
    [[nodiscard]] QSharedPointer<TLM::SDK::Lap> lap(int car) const;
    [[nodiscard]] bool isCarInWorld(int car) const;

    /** The same for the user's own car; false, null and nothing while it has no slot. */
    [[nodiscard]] bool isMyLapReady() const;
    [[nodiscard]] QSharedPointer<TLM::SDK::Lap> myLap() const;
    void processMyLap(bool completed);

private:
    [[nodiscard]] bool hasOwnCarSlot() const;
    [[nodiscard]] int ownSessionNumber() const;

    void settleFeed();
    bool updateDriver(int index);
    [[nodiscard]] bool hasStatusChanged() const;

    void fillVariableTable(const irsdk_varHeader* vars, qsizetype count);
    void resolveSamplingPlan(const irsdk_varHeader* vars, qsizetype count, qint64 dataLength);
    void distributeSessionClock();

    void endLap(int index, bool completed);
    void deriveChannels(int car, LapCourse course);
    [[nodiscard]] QStringList takeDebugLines();

    Feed m_replay = Feed::Unknown;
    QStringList m_varNames;
    QStringList m_varUnits;
    QList<RecorderCar> m_cars;
    qint32 m_myCarIdx = -1;
    bool m_reserved = false;  // cleared with the rest; nothing reads it
    bool m_diskLoading = false;
    quint64 m_sessionNum = 0;
    quint64 m_lastSessionNum = 0;

    SessionDigest m_digest{*this};
    quint64 m_carListRevision = 0;  // of the digest that the car list was made from
    quint64 m_recordsRevision = 1;
    bool m_isSampleHandedOut = false;  // of any car
    SamplingPlan m_plan;
    QStringList m_debugLines;  // to be written when nothing is half done any more
};

/**
 * Writes lines to the debug log of the default category, in their order.
 *
 * The log's handler is the host's and may do whatever a slot of the host may: run an event loop,
 * disconnect or delete the plugin. So lines are kept while anything is half done, and whoever calls
 * this MUST have finished and MUST own the lines itself.
 */
void writeDebugLines(const QStringList& lines);

}  // namespace reader

using reader::iRTelemetryReader;
