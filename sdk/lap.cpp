#include "sdk/lap.h"

#include <algorithm>
#include <utility>

namespace TLM::SDK {

namespace {

// Written for a reading that a sample lacks. The formats that hosts share know it as a
// single-precision number, hence not the double 1e25.
constexpr double kMissingReading = static_cast<double>(1e25F);

// The longest reservation granted to a hint: 20 minutes at 60 samples a second.
constexpr qsizetype kMaxReservedSamples = 72'000;

template <typename T>
double storedNumber(QVariant const& variant) {
    return static_cast<double>(*static_cast<T const*>(variant.constData()));
}

// The same number as QVariant::toDouble(), which dispatches through the meta-type system at ten
// times the price; this runs for every value of every car in every tick.
double toNumber(QVariant const& variant) {
    switch (variant.typeId()) {
        case QMetaType::Double:
            return storedNumber<double>(variant);
        case QMetaType::Float:
            return storedNumber<float>(variant);
        case QMetaType::Int:
            return storedNumber<int>(variant);
        case QMetaType::UInt:
            return storedNumber<uint>(variant);
        case QMetaType::LongLong:
            return storedNumber<qlonglong>(variant);
        case QMetaType::ULongLong:
            return storedNumber<qulonglong>(variant);
        case QMetaType::Bool:
            return storedNumber<bool>(variant);
        default:
            return variant.toDouble();
    }
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

void Lap::clear() {
    m_channels.clear();
    m_columns.clear();
    m_calculatedChannels.clear();
    removeValues();
}

int Lap::size() const {
    if (!m_channels.isEmpty()) {
        return static_cast<int>(m_channels.first()->samples.size());
    }
    if (!m_calculatedChannels.isEmpty()) {
        return static_cast<int>(m_calculatedChannels.first()->samples.size());
    }
    return 0;
}

Value Lap::value(QString const& name) const {
    if (!containsValue(name) && name == QLatin1String("Lap time")) {
        return {lapTime(), QString()};
    }
    return DynamicData::value(name);
}

void Lap::addChannel(Channel* channel, QString const& name) {
    addChannel(QSharedPointer<Channel>(channel), name);
}

void Lap::addChannel(QSharedPointer<Channel> const& channel, QString const& name) {
    if (channel) {
        m_channels.insert(name, channel);
        m_columns.clear();
    }
}

void Lap::addCalculatedChannel(QSharedPointer<Channel> const& channel, QString const& name) {
    if (channel) {
        m_calculatedChannels.insert(name, channel);
    }
}

void Lap::removeChannel(QString const& name) {
    m_channels.remove(name);
    m_columns.clear();
}

void Lap::addSample(Sample const& sample) {
    if (m_columns.empty()) {
        listColumns();
    }
    std::size_t column = 0;
    auto value = sample.data().cbegin();
    const auto lastValue = sample.data().cend();
    while (value != lastValue || column != m_columns.size()) {
        const int order = value == lastValue ? 1
                          : column == m_columns.size()
                              ? -1
                              : compareNames(value.key(), m_columns[column].name);
        if (order < 0) {
            insertNewChannel(column, value.key(), value.value());
            ++value;
        } else if (order > 0) {
            m_columns[column].channel->samples.append(kMissingReading);
        } else {
            m_columns[column].channel->samples.append(toNumber(value->value));
            ++value;
        }
        ++column;
    }
}

void Lap::listColumns() {
    m_columns.reserve(static_cast<std::size_t>(m_channels.size()));
    for (auto it = m_channels.cbegin(); it != m_channels.cend(); ++it) {
        m_columns.push_back({it.key(), it.value().data()});
    }
}

void Lap::reserve(qsizetype samples) {
    m_expectedSamples = std::clamp<qsizetype>(samples, 0, kMaxReservedSamples);
}

void Lap::insertNewChannel(std::size_t column, QString const& name, Value const& value) {
    const qsizetype missed = m_columns.empty() ? 0 : m_columns.front().channel->samples.size() - 1;
    auto created = QSharedPointer<Channel>::create();
    created->setUnit(value.unit());
    created->samples.reserve(std::max(m_expectedSamples, missed + 1));
    created->samples.resize(std::max<qsizetype>(missed, 0), kMissingReading);
    created->samples.append(toNumber(value.value));
    const auto inserted = m_channels.insert(name, created);
    m_columns.insert(m_columns.begin() + static_cast<std::ptrdiff_t>(column),
                     {inserted.key(), created.data()});
}

}  // namespace TLM::SDK
