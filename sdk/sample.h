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
 * How much of the car record a plugin fills is its own choice. rataip fills two fields, carId()
 * with the car's slot, "0" to "63", and detailedTelemetry(), true for the user's own car alone.
 * Before a session has named its drivers, carId() is empty and detailedTelemetry() true for all;
 * the index in DataEmitter::sendSamples() is the slot from the beginning. Names and status are in
 * the car list (LivePluginInfo::cars) at the same index.
 *
 * The values of rataip bear the simulator's names in lower case and the simulator's units, "m/s",
 * "rad", "s"; a share with the unit "%" goes from 0 to 1. Of an array the last element is there.
 * The own car has the simulator's own-car and general variables, some 300. The others have what the
 * simulator tells of every car, whose names lose the "CarIdx" in front: "lapdistpct" is the car's
 * place on the lap, 0 to 1, and -1 while it is not in the world. With a known own car,
 * "sessiontime" (s), "sessiontimeremain" (s) and "sessiontick" (60 a second) are in every sample.
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
