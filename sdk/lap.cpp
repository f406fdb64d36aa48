#include "sdk/lap.h"

namespace TLM::SDK {

void Lap::clear() {
    m_channels.clear();
    m_columns.clear();
    m_calculatedChannels.clear();
    removeValues();
}

int Lap::size() const {
    if (!m_channels.isEmpty()) {
        return static_cast<int>(m_channels.first()->samples.size() + m_columns.keptRows());
    }
    if (!m_calculatedChannels.isEmpty()) {
        return static_cast<int>(m_calculatedChannels.first()->samples.size());
    }
    return 0;
}

Lap::ChannelMap const& Lap::channels() const {
    m_columns.expose();
    return m_channels;
}

QSharedPointer<Channel> Lap::channel(QString const& name) const {
    m_columns.expose();
    return m_channels.value(name);
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
        m_columns.expose();
        m_channels.insert(name, channel);
        m_columns.forget();
    }
}

void Lap::addCalculatedChannel(QSharedPointer<Channel> const& channel, QString const& name) {
    if (channel) {
        m_calculatedChannels.insert(name, channel);
    }
}

void Lap::removeChannel(QString const& name) {
    m_columns.expose();
    m_channels.remove(name);
    m_columns.forget();
}

void Lap::addSample(Sample const& sample) {
    m_columns.append(m_channels, sample.data());
}

}  // namespace TLM::SDK
