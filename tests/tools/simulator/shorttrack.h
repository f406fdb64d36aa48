#pragma once

#include "tools/simulator/options.h"

/** The model's share of testsupport::onShortTrack(). */
inline simulator::Options shortTrack(
    int cars = 6, simulator::SessionChoice session = simulator::SessionChoice::Practice) {
    simulator::Options options;
    options.track = simulator::TrackChoice::Short;
    options.cars = cars;
    options.session = session;
    return options;
}
