#pragma once

#include "sdk/carinfo.h"

#include <QDataStream>
#include <QList>
#include <QMetaType>
#include <QString>

namespace TLM::SDK {

/**
 * What a live plugin offers at the moment: its cars, its own name and that of its source. A host
 * builds its car selection from it.
 */
class LivePluginInfo {
public:
    QString pluginName() const { return m_pluginName; }
    void setPluginName(const QString& pluginName) { m_pluginName = pluginName; }

    QString sourceName() const { return m_sourceName; }
    void setSourceName(const QString& sourceName) { m_sourceName = sourceName; }

    /**
     * The cars in the order in which the plugin lists them.
     *
     * rataip lists 64, one for each car slot of the simulator: the index is the slot, and the
     * sample of that car has the same index in every DataEmitter::sendSamples(). A record holds the
     * slot as the carId(), the names of driver, team, car and class, the status, and
     * detailedTelemetry(), which is true for the user's own car alone. A slot without a driver has
     * no driver name. Until the first session has named its drivers, the names are empty and
     * detailedTelemetry() is true for all, which says nothing.
     */
    QList<CarInfo> cars;

private:
    friend struct RecordLayout;  // holds the layout to what hosts are built against

    QString m_pluginName;
    QString m_sourceName;
};

/** Writes source name, plugin name, the number of cars as a signed 32-bit integer, and the cars. */
QDataStream& operator<<(QDataStream& stream, const LivePluginInfo& info);

/**
 * Reads what was written. A stream that fails on the way still gives as many cars as it announced,
 * the rest of them as an empty car record reads; the stream's status tells. A count below 0 gives
 * none, and so does one that there is no memory for: that stream counts as corrupt.
 */
QDataStream& operator>>(QDataStream& stream, LivePluginInfo& info);

}  // namespace TLM::SDK
