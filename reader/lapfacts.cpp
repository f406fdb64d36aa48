#include "reader/lapfacts.h"

void LapFacts::addTo(TLM::SDK::Lap& lap) const {
    if (weekend) {
        lap.setTrackName(weekend->trackName);
        lap.setTrackConfig(weekend->trackConfig);
        lap.setSessionId(weekend->sessionId);
    }
    if (driver) {
        lap.setDriverName(driver->name);
        lap.setCarName(driver->carName);
    }
    if (session) {
        lap.setSession(*session);
    }
    if (lap.data().isEmpty()) {
        lap.data() = values.data();
        return;
    }
    for (auto value = values.data().cbegin(); value != values.data().cend(); ++value) {
        lap.setValue(value.key(), value.value());
    }
}
