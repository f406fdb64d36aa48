#pragma once

#include "sdk/channel.h"
#include "sdk/dynamicdata.h"

#include <QMap>
#include <QSharedPointer>
#include <QString>
#include <QStringView>

#include <cstddef>
#include <vector>

namespace TLM::SDK {

/**
 * Appends samples to the recorded channels of a lap, for Lap::addSample().
 *
 * In a tick thousands of lists grow by one entry each, and every one of them lies elsewhere: the
 * way to their ends costs many times what the entries do. So while nobody looks, the entries of
 * some samples are kept in one place, those of a channel side by side, and now and then put into
 * all channels at once. Whoever is given a channel could look at any time: from expose() on every
 * sample goes to the channels directly.
 *
 * Room in the lists is made ahead, for a few channels with each sample while the present room fills
 * up, and towards the expected length, so that there is never a sample at which all lists of a lap
 * move. Neither changes what the channels hold when somebody looks.
 *
 * The map owns the channels. Whoever changes it by other means MUST call expose() before and
 * forget() behind. Copies share the channels and are exposed, and so is the original.
 */
class ChannelColumns {
public:
    using ChannelMap = QMap<QString, QSharedPointer<Channel>>;

    ChannelColumns() = default;
    ChannelColumns(ChannelColumns const& other);
    ChannelColumns& operator=(ChannelColumns const& other);
    ChannelColumns(ChannelColumns&& other) noexcept = default;
    ChannelColumns& operator=(ChannelColumns&& other) noexcept = default;
    ~ChannelColumns() = default;

    /**
     * Appends one entry to every channel of `channels`, and channels for the names that it does not
     * have. The rules are those of Lap::addSample().
     */
    void append(ChannelMap& channels, DynamicData::ValueMap const& values);

    /** Completes the channels and keeps them complete: somebody may look at them from now on. */
    void expose() const;

    /** Whether expose() was called; also clear() does not take back a channel map once given. */
    [[nodiscard]] bool isExposed() const { return m_isExposed; }

    /** The channels are others from now on; the next append() looks at them anew. */
    void forget();

    /** There are no channels any more. */
    void clear();

    /** Entries that are kept for each channel and not in it yet. */
    [[nodiscard]] qsizetype keptRows() const;

    /** How many entries the channels may come to have. */
    void expect(qsizetype samples);

private:
    /** A channel and its name, as the map holds them. */
    struct Column {
        QStringView name;
        Channel* channel;
    };

    using Values = DynamicData::ValueMap::const_iterator;

    void startOver(ChannelMap const& channels);
    [[nodiscard]] int orderAt(Values value, Values lastValue, std::size_t column) const;
    [[nodiscard]] bool appendRow(DynamicData::ValueMap const& values);
    void appendInPlace(ChannelMap& channels, DynamicData::ValueMap const& values);
    void insert(ChannelMap& channels, std::size_t column, QString const& name, Value const& value);
    void flush() const;
    void prefetchBehind(std::size_t column) const;
    void makeRoomAhead();
    [[nodiscard]] qsizetype nextRoom() const;

    std::vector<Column> m_columns;
    mutable std::vector<double> m_kept;  // entries of a column, then those of the next
    mutable qsizetype m_keptRows = 0;
    mutable bool m_isExposed = false;
    qsizetype m_rowsToKeep = 0;
    qsizetype m_length = 0;  // of the first channel, with the rows
    qsizetype m_expectedSamples = 0;
    qsizetype m_room = 0;      // entries that every list can take
    qsizetype m_growFrom = 0;  // length at which the lists begin to grow
    std::size_t m_grown = 0;   // columns that have the next room already
};

}  // namespace TLM::SDK
