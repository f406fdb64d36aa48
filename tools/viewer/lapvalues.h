#pragma once

#include "sdk/lap.h"

#include <QStandardItemModel>
#include <QString>

#include <memory>

namespace rataip::viewer {

/** A lap's header and its values as a table of name, value and unit: the header's fields first. */
[[nodiscard]] std::unique_ptr<QStandardItemModel> lapValues(const TLM::SDK::Lap& lap);

/** How a lap is called in lists and titles: "Ada Berg, lap 4, 1:34.512". */
[[nodiscard]] QString lapTitle(const TLM::SDK::LapHeader& lap);

}  // namespace rataip::viewer
