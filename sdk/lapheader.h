#pragma once

#include "sdk/carinfo.h"
#include "sdk/dynamicdata.h"

#include <QDateTime>
#include <QMetaType>
#include <QString>
#include <QTime>
#include <QUuid>

#include <cstdint>

namespace TLM::SDK {

/** The kind of session a lap belongs to. 4 is a kind of the host's that no live plugin produces. */
enum class Session : std::int32_t {
    Unknown = -1,        // not known, or of another kind
    OfflineTesting = 0,  // alone on the track
    Practice = 1,        // open practice
    Qualify = 2,         // qualifying
    Warmup = 3,          // before the race
    Race = 5,            // the race
};

/** How a lap began. */
enum class LapType : std::int32_t {
    Unknown = -1,   // not classified yet
    OutLap = 0,     // in the pits
    FlyingLap = 1,  // at the line
};

/**
 * A lap without its channels: which car drove it, when, how long it took, where it sits in session
 * and stint, and the lap's named values.
 *
 * Of the car record, rataip fills carId() (the slot), driverName(), carName(), trackName(),
 * trackConfig(), source() and detailedTelemetry(). Team and class are the lap values "Team" and
 * "Class".
 *
 * A stream carries the car record alone (see CarInfo's operators). A header read back keeps its own
 * fields and its values as they were before.
 */
class LapHeader : public CarInfo, public DynamicData {
public:
    /** When the lap was driven; null when not known. rataip: the local time at its end. */
    QDateTime dateTime() const { return m_dateTime; }
    void setDateTime(const QDateTime& dateTime) { m_dateTime = dateTime; }

    /** The file that the lap belongs to, if any. rataip: none. */
    QString fileName() const { return m_fileName; }
    void setFileName(const QString& fileName) { m_fileName = fileName; }

    /**
     * The lap time; null (and so not valid) when nobody has set it.
     *
     * rataip gives 59:59.000, QTime(0, 59, 59), to every lap without a time: one that was not
     * driven to its end, an out lap outside a race, and one for which the simulator has no time.
     * Only a lap without samples has a null one. The time is the simulator's for the whole lap,
     * also when the host connected in the middle of it and the channels hold the rest of it alone;
     * "lapdistpct" then does not begin near 0.
     */
    QTime lapTime() const { return m_lapTime; }
    void setLapTime(const QTime& lapTime) { m_lapTime = lapTime; }

    /** The plugin that produced the lap. */
    QString pluginName() const { return m_pluginName; }
    void setPlugin(const QString& pluginName) { m_pluginName = pluginName; }

    /**
     * The lap's identity. rataip: a random one for each lap; a lap that ends in its first tick
     * bears that of the lap before.
     */
    QUuid lapId() const { return m_lapId; }
    void setLapId(const QUuid& lapId) { m_lapId = lapId; }

    QUuid stintId() const { return m_stintId; }
    void setStintId(const QUuid& stintId) { m_stintId = stintId; }

    QUuid sessionId() const { return m_sessionId; }
    void setSessionId(const QUuid& sessionId) { m_sessionId = sessionId; }

    /**
     * Number of the lap within the session. It identifies no lap, lapId() does.
     *
     * rataip gives a lap of the own car the simulator's number, as a rule. A completed lap of
     * another car has the number of laps that the simulator had counted before, and one that was
     * cut short has one more. So two laps in a row may bear the same number, such as an out lap and
     * the flying lap after it, both 0, and a number may be left out.
     */
    int lapInSession() const { return m_lapInSession; }
    void setLapInSession(int lapInSession) { m_lapInSession = lapInSession; }

    /** Number of the lap within its stint. rataip: the out lap is 0. */
    int lapInStint() const { return m_lapInStint; }
    void setLapInStint(int lapInStint) { m_lapInStint = lapInStint; }

    /** Number of the stint within the session. rataip: from 1. */
    int stintInSession() const { return m_stintInSession; }
    void setStintInSession(int stintInSession) { m_stintInSession = stintInSession; }

    Session session() const { return m_session; }
    void setSession(const Session& session) { m_session = session; }

    LapType lapType() const { return m_lapType; }
    void setLapType(const LapType& lapType) { m_lapType = lapType; }

    /** Whether the lap was driven to its end. */
    bool completed() const { return m_completed; }
    void setCompleted(bool completed) { m_completed = completed; }

private:
    friend struct RecordLayout;  // holds the layout to what hosts are built against

    QDateTime m_dateTime;
    QString m_fileName;
    QTime m_lapTime;
    QString m_pluginName;
    QUuid m_lapId;
    QUuid m_stintId;
    QUuid m_sessionId;
    std::int32_t m_lapInSession = 0;
    std::int32_t m_lapInStint = 0;
    std::int32_t m_stintInSession = 0;
    Session m_session = Session::Unknown;
    LapType m_lapType = LapType::Unknown;
    bool m_completed = false;
};

}  // namespace TLM::SDK
