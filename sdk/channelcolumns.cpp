#include "sdk/channelcolumns.h"

#include "sdk/number.h"
#include "sdk/shared.h"

#include <algorithm>
#include <iterator>

namespace TLM::SDK {

namespace {

// Written for a reading that a sample lacks. The formats that hosts share know it as a
// single-precision number, hence not the double 1e25.
constexpr double kMissingReading = static_cast<double>(1e25F);

// The longest room taken on the word of a hint: 20 minutes at 60 samples a second.
constexpr qsizetype kMaxExpectedSamples = 72'000;

// A lap that breaks off at once has not taken more than this, and the tick in which 64 cars begin
// their laps touches little memory.
constexpr qsizetype kFirstRoom = 32;

// Room grows towards the expected length by this factor at most, so that a lap that breaks off
// early does not hold on to the room of a whole one.
constexpr qsizetype kGrowthLimit = 24;

// The lists move while the last part of their room is filled: late, because most laps end before.
constexpr qsizetype kGrowthPart = 16;
constexpr qsizetype kMinGrowthSamples = 16;

qsizetype growthStart(qsizetype room) {
    return room - std::max(room / kGrowthPart, kMinGrowthSamples);
}

// Rows that are kept before they go into the channels. Twice as many are no faster, and make the
// tick in which they go longer.
constexpr qsizetype kRows = 16;
constexpr auto kRowsASize = static_cast<std::size_t>(kRows);

// Columns between one and those whose memory is asked for: no pattern leads to the lists' ends.
constexpr std::size_t kChannelDistance = 12;
constexpr std::size_t kListDistance = 6;

void prefetch([[maybe_unused]] void const* place) {
#if defined(__GNUC__)
    __builtin_prefetch(place, 1);
#endif
}

// Below, at or above zero as `left` sorts before, with or after `right`. A channel took its name
// from an earlier sample, so the two mostly share one text and need no look at the characters.
int compareNames(QString const& left, QStringView right) {
    if (left.constData() == right.data() && left.size() == right.size()) {
        return 0;
    }
    return QStringView(left).compare(right);
}

}  // namespace

ChannelColumns::ChannelColumns(ChannelColumns const& other) {
    *this = other;
}

ChannelColumns& ChannelColumns::operator=(ChannelColumns const& other) {
    if (this != &other) {
        other.expose();
        m_columns = other.m_columns;
        m_keptRows = 0;
        m_isExposed = true;
        m_rowsToKeep = other.m_rowsToKeep;
        m_length = other.m_length;
        m_expectedSamples = other.m_expectedSamples;
        m_room = other.m_room;
        m_growFrom = other.m_growFrom;
        m_grown = other.m_grown;
    }
    return *this;
}

void ChannelColumns::append(ChannelMap& channels, DynamicData::ValueMap const& values) {
    if (m_columns.empty()) {
        startOver(channels);
        m_columns.reserve(static_cast<std::size_t>(values.size()));
    }
    if (m_isExposed || m_columns.empty() || !appendRow(values)) {
        flush();
        appendInPlace(channels, values);
    } else if (keptRows() >= m_rowsToKeep) {
        flush();
        m_rowsToKeep = kRows;
    }
    makeRoomAhead();
}

/** Which comes next where values and columns are merged: below zero the value, above the column. */
int ChannelColumns::orderAt(Values value, Values lastValue, std::size_t column) const {
    if (value == lastValue) {
        return 1;
    }
    if (column == m_columns.size()) {
        return -1;
    }
    return compareNames(value.key(), m_columns[column].name);
}

/** Without effect and false when a value has no column yet. */
bool ChannelColumns::appendRow(DynamicData::ValueMap const& values) {
    m_kept.resize(m_columns.size() * kRowsASize);
    double* entry = m_kept.data() + m_keptRows;
    auto value = values.cbegin();
    const auto lastValue = values.cend();
    std::size_t column = 0;
    for (; column < m_columns.size(); ++column) {
        const int order = orderAt(value, lastValue, column);
        if (order < 0) {
            break;
        }
        if (order > 0) {
            *entry = kMissingReading;
        } else {
            *entry = toNumber(value->value);
            ++value;
        }
        entry += kRows;
    }
    if (column != m_columns.size() || value != lastValue) {
        return false;
    }
    ++m_keptRows;
    ++m_length;
    return true;
}

void ChannelColumns::appendInPlace(ChannelMap& channels, DynamicData::ValueMap const& values) {
    std::size_t column = 0;
    auto value = values.cbegin();
    const auto lastValue = values.cend();
    while (value != lastValue || column != m_columns.size()) {
        const int order = orderAt(value, lastValue, column);
        if (order < 0) {
            insert(channels, column, value.key(), value.value());
            ++value;
        } else if (order > 0) {
            m_columns[column].channel->samples.append(kMissingReading);
        } else {
            m_columns[column].channel->samples.append(toNumber(value->value));
            ++value;
        }
        ++column;
    }
    m_length = m_columns.empty() ? 0 : m_columns.front().channel->samples.size();
}

void ChannelColumns::expose() const {
    // A lap that is complete may be read on several threads at once: nothing is written then.
    if (m_isExposed) {
        return;
    }
    flush();
    m_isExposed = true;
    std::vector<double>().swap(m_kept);
}

void ChannelColumns::forget() {
    m_columns.clear();
}

void ChannelColumns::clear() {
    m_columns.clear();
    m_keptRows = 0;
}

qsizetype ChannelColumns::keptRows() const {
    return m_columns.empty() ? 0 : m_keptRows;
}

void ChannelColumns::flush() const {
    const qsizetype rows = keptRows();
    if (rows == 0) {
        return;
    }
    for (std::size_t column = 0; column < m_columns.size(); ++column) {
        prefetchBehind(column);
        QList<double>& samples = m_columns[column].channel->samples;
        samples.resize(samples.size() + rows);
        std::copy_n(m_kept.data() + column * kRowsASize, rows,
                    samples.data() + samples.size() - rows);
    }
    m_keptRows = 0;
}

void ChannelColumns::expect(qsizetype samples) {
    m_expectedSamples = std::clamp<qsizetype>(samples, 0, kMaxExpectedSamples);
}

void ChannelColumns::startOver(ChannelMap const& channels) {
    m_keptRows = 0;
    m_grown = 0;
    m_room = kFirstRoom;
    m_growFrom = growthStart(kFirstRoom);
    // Laps that expect different lengths do not flush in the same ticks.
    m_rowsToKeep = kRows - m_expectedSamples % kRows;
    if (channels.isEmpty()) {
        return;
    }
    for (auto it = channels.cbegin(); it != channels.cend(); ++it) {
        m_columns.push_back({it.key(), it.value().data()});
    }
    QList<double> const& first = m_columns.front().channel->samples;
    m_room = std::max(m_room, first.capacity());
    m_growFrom = std::max(growthStart(m_room), first.size());
}

void ChannelColumns::insert(ChannelMap& channels, std::size_t column, QString const& name,
                            Value const& value) {
    const qsizetype missed = m_columns.empty() ? 0 : m_columns.front().channel->samples.size() - 1;
    auto created = makeShared<Channel>();
    created->setUnit(value.unit());
    created->samples.reserve(std::max(m_room, missed + 1));
    created->samples.resize(std::max<qsizetype>(missed, 0), kMissingReading);
    created->samples.append(toNumber(value.value));
    const auto inserted = channels.insert(name, created);
    m_columns.insert(m_columns.begin() + static_cast<std::ptrdiff_t>(column),
                     {inserted.key(), created.data()});
    if (column < m_grown) {
        ++m_grown;
    }
}

void ChannelColumns::prefetchBehind(std::size_t column) const {
    if (column + kChannelDistance < m_columns.size()) {
        prefetch(m_columns[column + kChannelDistance].channel);
    }
    if (column + kListDistance < m_columns.size()) {
        QList<double> const& samples = m_columns[column + kListDistance].channel->samples;
        // The list's header, which says who shares it, lies right before its entries.
        prefetch(reinterpret_cast<char const*>(samples.constData()) - 1);
        prefetch(samples.constData() + samples.size());
    }
}

void ChannelColumns::makeRoomAhead() {
    if (m_length <= m_growFrom) {
        return;
    }
    const auto count = static_cast<qsizetype>(m_columns.size());
    const qsizetype steps = std::max<qsizetype>(m_room - m_growFrom, 1);
    const qsizetype due = std::min(count, (m_length - m_growFrom) * count / steps);
    const qsizetype room = nextRoom();
    for (; m_grown < static_cast<std::size_t>(due); ++m_grown) {
        m_columns[m_grown].channel->samples.reserve(room);
    }
    if (due == count) {
        m_grown = 0;
        m_room = room;
        m_growFrom = std::max(growthStart(room), m_length);
    }
}

qsizetype ChannelColumns::nextRoom() const {
    return std::max(2 * m_room, std::min(m_expectedSamples, kGrowthLimit * m_room));
}

}  // namespace TLM::SDK
