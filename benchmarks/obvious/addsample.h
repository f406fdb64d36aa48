#pragma once

#include "sdk/lap.h"
#include "sdk/sample.h"

namespace obvious {

/**
 * Appends a sample to the lap's recorded channels as one writes it down first with the operations
 * that the classes offer: the two sorted lists of names are walked side by side, and values and
 * channels are asked for by name.
 */
void addSample(TLM::SDK::Lap& lap, const TLM::SDK::Sample& sample);

}  // namespace obvious
