#pragma once

#include "sdk/carinfo.h"
#include "sdk/liveplugininfo.h"

#include <QList>
#include <QMap>
#include <QString>

namespace rataip::host {

/**
 * The named cars of a session, kept up to date from the lists that a plugin sends.
 *
 * A plugin sends the list of all slots of its source whenever anything in it changes. That includes
 * the cars' status, so it happens many times a lap. This class finds what is new in a list.
 */
class CarList {
public:
    /**
     * Replaces the list. Returns the named cars that are new or whose driver, team, car or class
     * has changed, in the order of the list. A new status alone does not count.
     */
    QList<TLM::SDK::CarInfo> update(const TLM::SDK::LivePluginInfo& info);

    /** How many cars have a name. */
    [[nodiscard]] qsizetype count() const { return m_cars.size(); }

    /** How many of the named cars are out on the track. */
    [[nodiscard]] qsizetype countOnTrack() const;

    /** How many of the named cars are in the pit lane or in a pit stall. */
    [[nodiscard]] qsizetype countInPits() const;

private:
    QMap<QString, TLM::SDK::CarInfo> m_cars;  // by car id
};

}  // namespace rataip::host
