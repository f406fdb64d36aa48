#pragma once

#include "sdk/carinfo.h"
#include "sdk/dynamicdata.h"

#include <QDataStream>
#include <QList>
#include <QMetaType>

namespace TLM::SDK {

/**
 * One car at one instant: its car record and the values measured then, one for each channel name. A
 * channel without a reading at this instant is simply absent.
 *
 * A stream carries the car record alone (see CarInfo's operators): a sample that was written and
 * read back has no values. A live host gets the values through the signals.
 */
class Sample : public CarInfo, public DynamicData {};

/**
 * Reads a list of samples: a 32-bit count and that many car records. A stream that fails on the way
 * leaves the list empty; a stream that had failed before keeps its earlier status. The count is
 * believed only as far as records follow, so a damaged one costs no memory.
 *
 * Writing is Qt's own for lists.
 */
QDataStream& operator>>(QDataStream& stream, QList<Sample>& samples);

}  // namespace TLM::SDK

Q_DECLARE_METATYPE(TLM::SDK::Sample)
