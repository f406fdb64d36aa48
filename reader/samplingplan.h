#pragma once

#include "irsdk/layout.h"

#include <QString>
#include <QStringList>
#include <QVariant>

#include <cstddef>
#include <cstring>
#include <vector>

namespace reader {

/** Where the simulator's data come from, as far as the session text has said. */
enum class Feed { Unknown, Live, Replay };

/** How a value is read from a snapshot and what a QVariant holds of it. */
enum class Reading {
    CharAsInt,  // one signed byte, held as int
    Bool,       // one byte, 0 is false
    Int,
    Float,
    Double,
    Tick,  // the session tick of the own car, held as quint64
    None,  // nothing to read: a null QVariant
};

inline constexpr std::size_t kReadingCount = 7;

/** A QVariant of the type that holds such a reading. */
[[nodiscard]] inline QVariant emptyValue(Reading reading) {
    switch (reading) {
        case Reading::CharAsInt:
        case Reading::Int:
            return QVariant::fromValue<int>(0);
        case Reading::Bool:
            return QVariant::fromValue<bool>(false);
        case Reading::Float:
            return QVariant::fromValue<float>(0.0F);
        case Reading::Double:
            return QVariant::fromValue<double>(0.0);
        case Reading::Tick:
            return QVariant::fromValue<quint64>(0);
        case Reading::None:
            break;
    }
    return {};
}

/** A number of the snapshot at `bytes`, which need not be aligned. */
template <typename Number>
[[nodiscard]] Number loadNumber(const char* bytes) {
    Number number;
    std::memcpy(&number, bytes, sizeof number);
    return number;
}

/** One value of a car's sample: its key and unit, and where a snapshot holds it. */
struct PlannedValue {
    QString key;
    QString unit;
    Reading reading = Reading::None;
    qint32 offset = 0;  // bytes from the start of the snapshot
};

/**
 * Which values of a snapshot go into which car's sample, resolved once for a table of variables
 * instead of in every tick.
 *
 * A variable that does not lie within the snapshot has no value, and elements beyond the car slots
 * are not there. Names of per-car arrays (from "caridx" on, in lower case) reach every car without
 * that prefix; everything else goes to the own car. Of an array of the own car the last element
 * remains, of two variables under one key the later one. The own car has no elements of per-car
 * arrays while it is driven live: its own variables say more. Every other car gets the own car's
 * session clock.
 */
class SamplingPlan {
public:
    /** What besides the table decides where values go. */
    struct Mode {
        bool diskLoading = false;  // per-car arrays are variables like any other
        bool live = false;         // neither a replay nor unknown yet
        int ownCar = -1;           // a slot, or -1
        int carCount = 0;
        qint64 dataLength = 0;  // bytes of the snapshot

        bool operator==(const Mode&) const = default;
    };

    /** Whether the plan still holds for this table of `count` entries. */
    [[nodiscard]] bool matches(const irsdk_varHeader* vars, qsizetype count,
                               const Mode& mode) const;

    /** Resolves the plan anew; `names` are in lower case, and both lists have `count` entries. */
    void resolve(const irsdk_varHeader* vars, qsizetype count, const QStringList& names,
                 const QStringList& units, const Mode& mode);

    /** Another number after each resolve(), never 0 then. */
    [[nodiscard]] quint64 version() const { return m_version; }

    /** The values of slot `car`, each key once, in ascending order of the keys. */
    [[nodiscard]] const std::vector<PlannedValue>& values(int car) const {
        return m_cars[static_cast<std::size_t>(car)];
    }

    /**
     * Whether the session clock of the other cars is part of the plan. It is not when the own car
     * lacks a variable of it: then what its sample holds is passed on, by name, which has the
     * places of all values of every car found anew in each tick - many times the cost of one by
     * plan.
     */
    [[nodiscard]] bool includesSessionClock() const { return m_includesSessionClock; }

    /** The own car's session tick in a snapshot; 0 when the plan has none. */
    [[nodiscard]] quint64 sessionTick(const char* data) const;

private:
    /** What of a description decides where values lie. */
    struct Entry {
        qint32 type;
        qint32 offset;
        qint32 count;

        explicit Entry(const irsdk_varHeader& header)
            : type(header.type), offset(header.offset), count(header.count) {}
        bool operator==(const Entry&) const = default;
    };

    /** Where a value lies and how it is read. */
    struct Source {
        Reading reading = Reading::None;
        qint32 offset = 0;
    };

    class Elements;

    // `last` is the source of the value converted last, which an element of a type that is not
    // known takes over.
    void planVariable(const Elements& elements, const QString& name, const QString& unit,
                      Source& last);
    void planPerCar(const Elements& elements, const QString& key, const QString& unit,
                    Source& last);
    void planOwn(const Elements& elements, const QString& key, const QString& unit, Source& last);
    void planSessionClock();
    [[nodiscard]] const PlannedValue* ownValue(const QString& key) const;
    void add(int car, const QString& key, const QString& unit, const Source& source);

    std::vector<Entry> m_table;
    Mode m_mode;
    std::vector<std::vector<PlannedValue>> m_cars;
    Source m_tick;
    bool m_includesSessionClock = false;
    quint64 m_version = 0;
    bool m_isResolved = false;
};

}  // namespace reader
