#pragma once

#include "sdk/lap.h"

#include <QHash>
#include <QString>
#include <QUuid>
#include <QtGlobal>

#include <optional>
#include <vector>

class TStringTree;

namespace reader {

/** What the results of a session say of one car. */
struct CarResult {
    qint32 lap;         // the lap that the car is on: one more than it has completed
    float lastLapTime;  // seconds
};

/** What the session text says of one session. */
struct SessionFacts {
    int number = -1;
    std::optional<TLM::SDK::Session> kind;          // nothing for a type that names no kind
    std::vector<std::optional<CarResult>> results;  // by car slot
};

/** Who drives a car. */
struct DriverEntry {
    QString driverName;
    QString teamName;
    QString carName;
    QString className;
};

/** What the session text says of the laps of one car. A part that the text lacks is not there. */
struct LapFacts {
    struct Weekend {
        QString trackName;
        QString trackConfig;
        QUuid sessionId;
        quint64 sessionNumber = 0;
    };
    struct Driver {
        QString name;
        QString carName;
    };

    std::optional<Weekend> weekend;
    std::optional<Driver> driver;
    std::optional<TLM::SDK::Session> session;
    TLM::SDK::DynamicData values;

    /** Puts the facts into a lap. One without values shares these until somebody changes them. */
    void addTo(TLM::SDK::Lap& lap) const;
};

/**
 * The session's id from its identity text, padded to 32 hexadecimal digits; the null id when the
 * text is longer or holds anything else.
 */
[[nodiscard]] QUuid sessionId(const QString& id);

/**
 * All that the reader derives from the session text, derived once while the text stays the same.
 *
 * refresh() is the one look at the text's revision; everything else is as of the last one. Nothing
 * is an error: a part that is missing is not there, and a number that does not parse is 0.
 */
class SessionDigest {
public:
    /** The text's tree MUST outlive the digest. */
    explicit SessionDigest(const TStringTree& text) : m_text(text) {}

    /** Looks whether the text has changed; `carCount` is the number of car slots. */
    void refresh(int carCount);

    /** The user's own car as the text numbers it, -1 when it does not. May exceed the slots. */
    [[nodiscard]] int ownCar() const { return m_ownCar; }

    /** Length of the track, 0 while it is not known. */
    [[nodiscard]] double trackKilometres() const { return m_trackKilometres; }

    /** Whether the text lists drivers at all. */
    [[nodiscard]] bool hasDrivers() const { return m_hasDrivers; }

    /** Who drives the car of a slot; nothing for a car that is not listed. */
    [[nodiscard]] const std::optional<DriverEntry>& driver(int car) const;

    /** Another number after each change of the text, never 0. */
    [[nodiscard]] quint64 revision() const { return m_revision; }

    /** A session's facts, good until the next call. */
    [[nodiscard]] const SessionFacts& session(int number);

    /**
     * The facts of the laps of a car, good until the next call. `session` is the number of the
     * session, nothing when there is no own car to tell it.
     */
    [[nodiscard]] const LapFacts& lapFacts(int car, std::optional<int> session);

private:
    /** What lap facts were made from: revisions of parts of the text, 0 for one that is missing. */
    struct Origin {
        quint64 weekend = 0;
        quint64 driverInfo = 0;
        quint64 carSetup = 0;
        std::optional<QString> sessionType;

        bool operator==(const Origin&) const = default;
    };

    [[nodiscard]] quint64 revisionOf(const QString& branch) const;
    [[nodiscard]] QString typeOf(int session) const;
    void readOwnCar();
    void readTrack();
    void readDrivers();
    void readResults(const TStringTree& positions);
    [[nodiscard]] LapFacts collectLapFacts(int car, const std::optional<QString>& type) const;
    void addDriverInfo(LapFacts& facts, const TStringTree& driverInfo, int car) const;

    const TStringTree& m_text;
    quint64 m_revision = 0;  // of the text, 0 before the first look
    int m_carCount = 0;
    int m_ownCar = -1;
    double m_trackKilometres = 0.0;
    bool m_hasDrivers = false;
    std::vector<std::optional<DriverEntry>> m_drivers;  // by car slot
    std::optional<SessionFacts> m_session;
    Origin m_factsOrigin;
    QHash<int, LapFacts> m_facts;  // by car
};

}  // namespace reader
