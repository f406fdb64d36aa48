#pragma once

#include "sdk/liveplugininfo.h"
#include "sdk/sample.h"
#include "tools/viewer/carstate.h"

#include <QList>

#include <optional>

namespace rataip::viewer {

/**
 * The cars of the session, kept up to date from what a plugin sends: the car list by slot, and each
 * tick's samples in the same order. Slots without a driver's name are no cars.
 *
 * A sample that lacks a value leaves the car without it; more samples than cars are ignored.
 */
class Field {
public:
    void setCars(const TLM::SDK::LivePluginInfo& info);
    void setSamples(const QList<TLM::SDK::Sample>& samples);

    /** Forgets where the cars are and what they do; who drives them stays. */
    void clearSamples();

    /** The slot of the user's own car, if it is known. */
    [[nodiscard]] std::optional<qsizetype> ownSlot() const;

    /** The named cars by slot, with their positions. */
    [[nodiscard]] QList<CarState> cars() const;

private:
    QList<CarState> m_slots;
};

}  // namespace rataip::viewer
