#pragma once

#include <QByteArray>
#include <QDataStream>

namespace fuzz {

/** The records that travel in streams, as the first byte of a stream input numbers them. */
enum class StreamRecord { CarInfo, Sample, LapHeader, LivePluginInfo, SampleList, LoadedList };

inline constexpr int kStreamRecords = 6;

/** Versions of the stream, in the order in which that byte numbers them behind the records. */
inline constexpr QDataStream::Version kStreamVersions[] = {QDataStream::Qt_6_0, QDataStream::Qt_6_4,
                                                           QDataStream::Qt_5_15};

/**
 * Whether reading `bytes` as this record stays within what the record's own readers decide: texts
 * and numbers as values, and not more cars or longer texts announced than a run can afford. What Qt
 * makes of other kinds of nested values is Qt's own affair.
 */
[[nodiscard]] bool staysWithinRecords(StreamRecord record, const QByteArray& bytes);

}  // namespace fuzz
