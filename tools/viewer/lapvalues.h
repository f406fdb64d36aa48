#pragma once

#include "sdk/lap.h"

#include <QStandardItemModel>
#include <QString>

#include <memory>

namespace rataip::viewer {

/** A table of name, value and unit: the lap's header fields, then its values. */
[[nodiscard]] std::unique_ptr<QStandardItemModel> lapValues(const TLM::SDK::Lap& lap);

/** A lap's name in lists and titles: "Ada Berg, lap 4, 1:34.512". */
[[nodiscard]] QString lapTitle(const TLM::SDK::LapHeader& lap);

}  // namespace rataip::viewer
