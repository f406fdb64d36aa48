#pragma once

#include "sdk/carstatus.h"

#include <QDataStream>
#include <QString>

namespace TLM::SDK {

/**
 * One car of a session: who drives it, what it is, where it runs, which source it comes from and
 * which state it is in. It is an entry of the car list and the base of every sample and lap header.
 *
 * In a stream the record is a map of ten named variants, nothing else. Reading never throws: a
 * stream that fails is told by its status, and the record then has the fields of an empty map.
 */
class CarInfo {
public:
    /** The car's identifier within the session. */
    QString carId() const { return m_carId; }
    void setCarId(const QString& carId) { m_carId = carId; }

    QString trackName() const { return m_trackName; }
    void setTrackName(const QString& trackName) { m_trackName = trackName; }

    /** Name of the track's layout. */
    QString trackConfig() const { return m_trackConfig; }
    void setTrackConfig(const QString& trackConfig) { m_trackConfig = trackConfig; }

    /** Name of the data source; its key in a stream is "sourceName". */
    QString source() const { return m_source; }
    void setSource(const QString& source) { m_source = source; }

    /** Name of the car's model. */
    QString carName() const { return m_carName; }
    void setCarName(const QString& carName) { m_carName = carName; }

    const QString& className() const { return m_className; }
    void setClassName(const QString& className) { m_className = className; }

    QString driverName() const { return m_driverName; }
    void setDriverName(const QString& driverName) { m_driverName = driverName; }

    QString teamName() const { return m_teamName; }
    void setTeamName(const QString& teamName) { m_teamName = teamName; }

    CarStatus status() const { return m_status; }
    void setStatus(CarStatus status) { m_status = status; }

    /**
     * Whether full telemetry is available for this car; true in a new record. rataip: for the
     * user's own car alone, which is how to find it, see LivePluginInfo::cars.
     */
    bool detailedTelemetry() const { return m_detailedTelemetry; }
    void setDetailedTelemetry(bool detailedTelemetry) { m_detailedTelemetry = detailedTelemetry; }

private:
    friend struct RecordLayout;  // holds the layout to what hosts are built against

    QString m_carId;
    QString m_trackName;
    QString m_trackConfig;
    QString m_source;
    QString m_carName;
    QString m_className;
    QString m_driverName;
    QString m_teamName;
    CarStatus m_status = CarStatus::Undefined;
    bool m_detailedTelemetry = true;
};

/**
 * Writes the car record. Records derived from it (samples, lap headers) are written by this
 * operator too: a stream carries their car identity only.
 */
QDataStream& operator<<(QDataStream& stream, const CarInfo& car);

/**
 * Reads a car record into `car`. Every field is assigned: one that the stream lacks becomes an
 * empty text, `detailedTelemetry` false (though a new record starts with true) and `status` 0.
 * Unknown keys are ignored. What a derived record has besides its car identity stays as it was.
 */
QDataStream& operator>>(QDataStream& stream, CarInfo& car);

}  // namespace TLM::SDK
