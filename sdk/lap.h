#pragma once

#include "sdk/channel.h"
#include "sdk/lapheader.h"
#include "sdk/sample.h"

#include <QMap>
#include <QSharedPointer>
#include <QString>
#include <QStringList>

namespace TLM::SDK {

/**
 * A lap: its header with the lap values, the channels recorded sample by sample, and the channels
 * calculated from them. A name may exist among both kinds; the two are independent.
 *
 * A name that is not there is an ordinary answer: a null channel, a default Value, no effect. A
 * null channel is never stored.
 *
 * Any number of threads may read a lap at once while nobody changes it. rataip changes none of the
 * laps that it has handed over.
 *
 * A lap of rataip has a recorded channel for each value of its samples. It adds "fuelweight" (kg)
 * for the own car, and for other cars, which the simulator tells less of, "speed" (m/s), "lapdist"
 * (m), "dt" (the time to the next sample, s) and, when the lap was recorded from the line on,
 * "lapcurrentlaptime" (s); the last two name no unit. Speed and distance are missing in a replay.
 * There are no calculated channels.
 *
 * A lap of another car ends when the simulator counts it, and a race's formation lap may not be
 * counted. Then the first lap of the race holds the formation lap too, with the lap time of the
 * race lap alone, and the first half of either may stand at the beginning of the lap after it:
 * where "lapdistpct" falls within a lap, two of them meet.
 *
 * Laps travel as QSharedPointer<Lap>. A copy of a lap shares its Channel objects: what is added to
 * a channel that both have is seen through the other. Who wants an independent copy MUST copy the
 * channels.
 *
 * @code
 * Lap lap;
 * lap.addSample(sample);  // once a tick
 * QSharedPointer<Channel> speed = lap.channel("speed");
 * for (long long i = 0; speed && i < speed->samples.size(); ++i) {
 *     if (speed->isValid(i)) plot(i, speed->sample(i));
 * }
 * @endcode
 */
class Lap : public LapHeader {
public:
    using ChannelMap = QMap<QString, QSharedPointer<Channel>>;

    /** Empties both kinds of channels and the lap values; the header's fields stay. */
    void clear();

    /**
     * Number of entries of the first recorded channel in name order, without any of the first
     * calculated one, else 0.
     */
    int size() const;

    /** True when there is no channel of either kind; lap values do not count. */
    bool isEmpty() const { return m_channels.isEmpty() && m_calculatedChannels.isEmpty(); }

    /** The recorded channels by name. */
    const ChannelMap& channels() const { return m_channels; }

    /** The lap values. */
    const DynamicData& values() const { return *this; }

    /**
     * The lap value of that name. "Lap time" gives the header's lap time when no lap value bears
     * that name.
     */
    Value value(const QString& name) const;

    QSharedPointer<Channel> channel(const QString& name) const { return m_channels.value(name); }
    QSharedPointer<Channel> calculatedChannel(const QString& name) const {
        return m_calculatedChannels.value(name);
    }

    bool containsRecordedChannel(const QString& name) const { return m_channels.contains(name); }
    bool containsCalculatedChannel(const QString& name) const {
        return m_calculatedChannels.contains(name);
    }
    bool containsChannel(const QString& name) const {
        return containsRecordedChannel(name) || containsCalculatedChannel(name);
    }

    /** Removes a recorded channel; a calculated one of that name stays. */
    void removeChannel(const QString& name) { m_channels.remove(name); }
    /** Removes a calculated channel; a recorded one of that name stays. */
    void removeCalculatedChannel(const QString& name) { m_calculatedChannels.remove(name); }

    /** Stores a recorded channel, replacing one of that name. The lap takes ownership of `channel`.
     */
    void addChannel(Channel* channel, const QString& name);
    void addChannel(const QSharedPointer<Channel>& channel, const QString& name);
    void addCalculatedChannel(const QSharedPointer<Channel>& channel, const QString& name);

    /** Names in ascending order. */
    QStringList getAvailableRecordedChannels() const { return m_channels.keys(); }
    QStringList getAvailableCalculatedChannels() const { return m_calculatedChannels.keys(); }

    /**
     * Appends one entry to every recorded channel: the sample's value of that name as a number, or
     * the missing marker. A value that is no number counts as 0.
     *
     * A name that the lap does not know yet becomes a channel with the value's unit, filled up with
     * missing markers to the length of the first channel in name order, less one. That first
     * channel has usually received this sample's entry already. When the new name sorts before all
     * others it has not, and the new channel stays one entry short for ever: hosts know recordings
     * made so.
     */
    void addSample(const Sample& sample);

private:
    friend struct RecordLayout;  // holds the layout to what hosts are built against

    [[nodiscard]] QSharedPointer<Channel> newChannel(const QString& unit) const;

    ChannelMap m_channels;
    ChannelMap m_calculatedChannels;
};

}  // namespace TLM::SDK
