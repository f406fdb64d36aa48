#pragma once

#include "sdk/lap.h"
#include "sdk/sample.h"

namespace obvious {

/**
 * Appends a sample to the lap's recorded channels in the obvious way, with the public operations of
 * the classes: it walks the two sorted lists of names in parallel and looks up values and channels
 * by name.
 */
void addSample(TLM::SDK::Lap& lap, const TLM::SDK::Sample& sample);

}  // namespace obvious
