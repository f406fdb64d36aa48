#include "sdk/lap.h"

#include "sdk/shared.h"

#include <algorithm>
#include <utility>

namespace TLM::SDK {

namespace {

// Written for a reading that a sample lacks. The formats that hosts share know it as a
// single-precision number, hence not the double 1e25.
constexpr double kMissingReading = static_cast<double>(1e25F);

/**
 * The same number as QVariant::toDouble(), which asks the meta-type system at several times the
 * price.
 */
double toNumber(const QVariant& value) {
    switch (value.typeId()) {
        case QMetaType::Double:
            return *static_cast<const double*>(value.constData());
        case QMetaType::Float:
            return static_cast<double>(*static_cast<const float*>(value.constData()));
        case QMetaType::Int:
            return static_cast<double>(*static_cast<const int*>(value.constData()));
        case QMetaType::Bool:
            return *static_cast<const bool*>(value.constData()) ? 1.0 : 0.0;
        case QMetaType::ULongLong:
            return static_cast<double>(*static_cast<const qulonglong*>(value.constData()));
        default:
            return value.toDouble();
    }
}

/**
 * Below, at or above zero as `left` sorts before, with or after `right`. A channel took its name
 * from an earlier sample, so that the two mostly share one text.
 */
int compareNames(const QString& left, const QString& right) {
    return left.constData() == right.constData() && left.size() == right.size()
               ? 0
               : left.compare(right);
}

}  // namespace

void Lap::clear() {
    m_channels.clear();
    m_calculatedChannels.clear();
    removeValues();
}

int Lap::size() const {
    const ChannelMap& channels = m_channels.isEmpty() ? m_calculatedChannels : m_channels;
    return channels.isEmpty() ? 0 : static_cast<int>(channels.first()->samples.size());
}

Value Lap::value(const QString& name) const {
    if (!containsValue(name) && name == QLatin1String("Lap time")) {
        return {lapTime(), QString()};
    }
    return DynamicData::value(name);
}

void Lap::addChannel(Channel* channel, const QString& name) {
    addChannel(QSharedPointer<Channel>(channel), name);
}

void Lap::addChannel(const QSharedPointer<Channel>& channel, const QString& name) {
    if (channel) {
        m_channels.insert(name, channel);
    }
}

void Lap::addCalculatedChannel(const QSharedPointer<Channel>& channel, const QString& name) {
    if (channel) {
        m_calculatedChannels.insert(name, channel);
    }
}

void Lap::addSample(const Sample& sample) {
    auto value = sample.data().cbegin();
    const auto lastValue = sample.data().cend();
    // Appending changes channels and not the map, which copies of the lap may share.
    auto channel = m_channels.cbegin();
    while (value != lastValue || channel != m_channels.cend()) {
        const int order = value == lastValue             ? 1
                          : channel == m_channels.cend() ? -1
                                                         : compareNames(value.key(), channel.key());
        if (order > 0) {
            (*channel)->samples.append(kMissingReading);
        } else {
            if (order < 0) {
                channel = m_channels.insert(channel, value.key(), newChannel(value->unit()));
            }
            (*channel)->samples.append(toNumber(value->value));
            ++value;
        }
        ++channel;
    }
}

/** For a name that is new in the present sample. */
QSharedPointer<Channel> Lap::newChannel(const QString& unit) const {
    auto channel = makeShared<Channel>();
    channel->setUnit(unit);
    if (!m_channels.isEmpty()) {
        const qsizetype missed = m_channels.first()->samples.size() - 1;
        channel->samples.resize(std::max<qsizetype>(missed, 0), kMissingReading);
    }
    return channel;
}

}  // namespace TLM::SDK
