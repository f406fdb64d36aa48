#pragma once

#include "sdk/liveplugininfo.h"
#include "sdk/sample.h"
#include "tools/viewer/carstate.h"

#include <QList>

#include <optional>

namespace rataip::viewer {

/**
 * The cars of the session, kept up to date from a plugin's signals: the car list by slot, and the
 * samples of each tick in the same order. A slot without a driver's name is not a car.
 *
 * A car has no value where its sample lacks it. Samples beyond the number of cars are ignored.
 */
class Field {
public:
    void setCars(const TLM::SDK::LivePluginInfo& info);
    void setSamples(const QList<TLM::SDK::Sample>& samples);

    /** Forgets the cars' positions and laps. Keeps their drivers. */
    void clearSamples();

    /** The slot of the user's own car, if known. */
    [[nodiscard]] std::optional<qsizetype> ownSlot() const;

    /** The cars with a driver, by slot, with their positions. */
    [[nodiscard]] QList<CarState> cars() const;

private:
    QList<CarState> m_slots;
};

}  // namespace rataip::viewer
