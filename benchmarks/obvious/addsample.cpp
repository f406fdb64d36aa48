#include "benchmarks/obvious/addsample.h"

namespace obvious {

using TLM::SDK::Channel;
using TLM::SDK::Lap;
using TLM::SDK::Sample;
using TLM::SDK::Value;

namespace {

constexpr double kMissingReading = static_cast<double>(1e25F);

void append(Lap& lap, const QString& name, double reading) {
    lap.channel(name)->samples.append(reading);
}

void addNewChannel(Lap& lap, const QString& name, const Value& value) {
    auto* channel = new Channel;
    channel->setUnit(value.unit());
    for (int i = 0; i < lap.size() - 1; ++i) {
        channel->samples.append(kMissingReading);
    }
    channel->samples.append(value.value.toDouble());
    lap.addChannel(channel, name);
}

}  // namespace

void addSample(Lap& lap, const Sample& sample) {
    const QStringList names = sample.valueNameList();
    const QStringList channels = lap.getAvailableRecordedChannels();
    qsizetype n = 0;
    qsizetype c = 0;
    while (n < names.size() || c < channels.size()) {
        if (n < names.size() && c < channels.size() && names[n] == channels[c]) {
            append(lap, channels[c], sample.value(names[n]).value.toDouble());
            ++n;
            ++c;
        } else if (n == names.size() || (c < channels.size() && channels[c] < names[n])) {
            append(lap, channels[c], kMissingReading);
            ++c;
        } else {
            addNewChannel(lap, names[n], sample.value(names[n]));
            ++n;
        }
    }
}

}  // namespace obvious
