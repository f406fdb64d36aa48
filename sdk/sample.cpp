#include "sdk/sample.h"

#include <QIODevice>

#include <algorithm>

namespace TLM::SDK {

namespace {

// Room taken before the first record is read: several times the cars of one tick, and small enough
// to be taken on the word of a damaged count.
constexpr quint32 kMaxReservedSamples = 256;

// Gives a reader a stream in good state, and puts an earlier failure back at the end. While the
// device runs a transaction the status belongs to whoever started it and stays.
class StreamStatusKeeper {
public:
    explicit StreamStatusKeeper(QDataStream& stream)
        : m_stream(stream), m_earlierStatus(stream.status()) {
        const QIODevice* const device = stream.device();
        if (device == nullptr || !device->isTransactionStarted()) {
            stream.resetStatus();
        }
    }

    ~StreamStatusKeeper() {
        if (m_earlierStatus != QDataStream::Ok) {
            m_stream.resetStatus();
            m_stream.setStatus(m_earlierStatus);
        }
    }

    StreamStatusKeeper(const StreamStatusKeeper&) = delete;
    StreamStatusKeeper& operator=(const StreamStatusKeeper&) = delete;

private:
    QDataStream& m_stream;
    const QDataStream::Status m_earlierStatus;
};

}  // namespace

QDataStream& operator>>(QDataStream& stream, QList<Sample>& samples) {
    const StreamStatusKeeper statusKeeper(stream);
    samples.clear();
    quint32 count = 0;
    stream >> count;
    samples.reserve(std::min(count, kMaxReservedSamples));
    for (quint32 i = 0; i < count; ++i) {
        Sample sample;
        stream >> sample;
        if (stream.status() != QDataStream::Ok) {
            samples.clear();
            break;
        }
        samples.append(sample);
    }
    return stream;
}

}  // namespace TLM::SDK
