#include "tests/fuzz/streamrecords.h"

#include <algorithm>

namespace fuzz {

namespace {

constexpr qint32 kAffordableCars = 64;

// Qt allocates a text by its length before it knows whether that many bytes follow.
constexpr quint32 kAffordableText = 64 * 1024;
constexpr quint32 kNullLength = 0xFFFFFFFFU;

/** Reads a stream as Qt's readers do, and drops the values. */
class StreamWalk {
public:
    explicit StreamWalk(const QByteArray& bytes) : m_bytes(bytes) {}

    [[nodiscard]] bool isAtEnd() const { return m_at >= m_bytes.size(); }

    quint32 number() {
        quint32 value = 0;
        constexpr qsizetype kSize = sizeof value;
        if (m_bytes.size() - m_at < kSize) {
            fail();
            return 0;
        }
        for (qsizetype i = 0; i < kSize; ++i) {
            value = value << 8U | static_cast<unsigned char>(m_bytes.at(m_at + i));
        }
        m_at += kSize;
        return value;
    }

    void skip(quint32 count) {
        if (count > m_bytes.size() - m_at) {
            fail();
        } else {
            m_at += count;
        }
    }

    void skipBytes() {
        const quint32 length = number();
        if (length != kNullLength) {
            skipLong(length);
        }
    }

    void skipText() {
        const quint32 length = number();
        if (length == kNullLength) {
            return;
        }
        if (length % 2 != 0) {
            m_good = false;
            return;
        }
        skipLong(length);
    }

    /** False for a variant of any but the plain types. */
    bool skipVariant() {
        const quint32 type = number();
        skip(1);
        switch (type) {
            case 0:  // invalid, without a value
                return true;
            case 10:  // QString
                skipText();
                return true;
            case 1:  // bool
                skip(1);
                return true;
            case 2:  // int
            case 3:  // unsigned int
                skip(4);
                return true;
            case 4:  // qlonglong
            case 5:  // qulonglong
            case 6:  // double
                skip(8);
                return true;
            case 12:  // QByteArray
                skipBytes();
                return true;
            default:
                return false;
        }
    }

    /** Skips a map of variants; false if one is of any but the plain types. */
    bool skipCar() {
        m_good = true;
        const quint32 entries = number();
        for (quint32 i = 0; i < entries && m_good; ++i) {
            // The value is read even after a name of invalid length.
            skipText();
            if (!skipVariant()) {
                return false;
            }
        }
        return true;
    }

    /** Whether no text was announced with a length that a run cannot afford. */
    [[nodiscard]] bool isAffordable() const { return m_affordable; }

private:
    void skipLong(quint32 length) {
        m_affordable = m_affordable && length <= kAffordableText;
        skip(length);
    }

    /** A read past the end consumes the rest. */
    void fail() {
        m_at = m_bytes.size();
        m_good = false;
    }

    const QByteArray& m_bytes;
    qsizetype m_at = 0;
    bool m_good = true;
    bool m_affordable = true;
};

bool skipCars(StreamWalk& walk, qint64 count) {
    for (qint64 i = 0; i < count && !walk.isAtEnd(); ++i) {
        if (!walk.skipCar()) {
            return false;
        }
    }
    return true;
}

bool skipRecord(StreamWalk& walk, StreamRecord record) {
    switch (record) {
        case StreamRecord::CarInfo:
        case StreamRecord::Sample:
        case StreamRecord::LapHeader:
            return walk.skipCar();
        case StreamRecord::LivePluginInfo: {
            walk.skipText();
            walk.skipText();
            const auto cars = static_cast<qint32>(walk.number());
            return cars <= kAffordableCars && skipCars(walk, cars);
        }
        case StreamRecord::SampleList:
        case StreamRecord::LoadedList:
            return skipCars(walk, walk.number());
    }
    return false;
}

}  // namespace

bool staysWithinRecords(StreamRecord record, const QByteArray& bytes) {
    StreamWalk walk(bytes);
    return skipRecord(walk, record) && walk.isAffordable();
}

}  // namespace fuzz
