#pragma once

#include "sdk/carinfo.h"
#include "sdk/liveplugininfo.h"

#include <QList>
#include <QMap>
#include <QString>

namespace rataip::host {

/**
 * The cars of a session that have a name, kept up to date from the lists that a plugin sends.
 *
 * A plugin lists all the slots that its source has and sends the whole list whenever anything in
 * it changes, the cars' status included, many times a lap. This class tells which of it is news.
 */
class CarList {
public:
    /**
     * Takes a new list over. Returns the named cars, in the list's order, that were not there
     * before or whose driver, team, car or class is another now; a new status alone is no news.
     */
    QList<TLM::SDK::CarInfo> update(const TLM::SDK::LivePluginInfo& info);

    /** How many cars have a name. */
    [[nodiscard]] qsizetype count() const { return m_cars.size(); }

    /** How many of the named cars are out on the track. */
    [[nodiscard]] qsizetype countOnTrack() const;

    /** How many of the named cars are in the pit lane or stand in a pit stall. */
    [[nodiscard]] qsizetype countInPits() const;

private:
    QMap<QString, TLM::SDK::CarInfo> m_cars;  // by car id
};

}  // namespace rataip::host
