#pragma once

#include "sdk/lap.h"
#include "sdk/sample.h"

#include <QMap>
#include <QString>

#include <gtest/gtest.h>

namespace fastpath {

/** Whether both have the same type and the same bits, also if NaN. */
[[nodiscard]] bool isSameToTheBit(const QVariant& left, const QVariant& right);

/** Whether both have the same names, each with the same value and unit. */
[[nodiscard]] testing::AssertionResult haveSameValues(const TLM::SDK::DynamicData& left,
                                                      const TLM::SDK::DynamicData& right);

/** Whether both have the same recorded channels, to the bit. */
[[nodiscard]] testing::AssertionResult haveSameChannels(const TLM::SDK::Lap& left,
                                                        const TLM::SDK::Lap& right);

/** Whether channels, values and header are the same, except random ids and the closing time. */
[[nodiscard]] testing::AssertionResult areSameLaps(const TLM::SDK::Lap& left,
                                                   const TLM::SDK::Lap& right);

}  // namespace fastpath
