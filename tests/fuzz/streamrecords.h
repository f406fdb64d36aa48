#pragma once

#include <QByteArray>
#include <QDataStream>

namespace fuzz {

/** The records with a stream format, by their number in the first byte of an input. */
enum class StreamRecord { CarInfo, Sample, LapHeader, LivePluginInfo, SampleList, LoadedList };

inline constexpr int kStreamRecords = 6;

/** Versions of the stream: the same byte divided by the number of records is the index. */
inline constexpr QDataStream::Version kStreamVersions[] = {QDataStream::Qt_6_0, QDataStream::Qt_6_4,
                                                           QDataStream::Qt_5_15};

/**
 * Whether reading `bytes` as this record runs only the record's own readers: its values are texts
 * and numbers, and it announces no more cars and no longer texts than a run can afford. Other
 * nested values are read by Qt alone.
 */
[[nodiscard]] bool staysWithinRecords(StreamRecord record, const QByteArray& bytes);

}  // namespace fuzz
