#pragma once

#include "sdk/carinfo.h"

#include <QByteArray>
#include <QDataStream>
#include <QIODevice>
#include <QString>
#include <QtGlobal>

// Stream bytes put together by hand: big-endian, independent of QDataStream.
class WireBytes {
public:
    WireBytes& u8(quint32 value) {
        m_bytes.append(static_cast<char>(value & 0xFFU));
        return *this;
    }

    WireBytes& u32(quint32 value) { return u16(value >> 16U).u16(value); }

    // A length in bytes and UTF-16 code units.
    WireBytes& text(const QString& value) {
        u32(static_cast<quint32>(value.size() * 2));
        for (const QChar character : value) {
            u16(character.unicode());
        }
        return *this;
    }

    WireBytes& nullText() { return u32(0xFFFFFFFF); }

    WireBytes& textVariant(const QString& key, const QString& value) {
        return text(key).u32(10).u8(0).text(value);
    }

    WireBytes& nullTextVariant(const QString& key) { return text(key).u32(10).u8(0).nullText(); }

    WireBytes& boolVariant(const QString& key, bool value) {
        return text(key).u32(1).u8(0).u8(value ? 1 : 0);
    }

    WireBytes& intVariant(const QString& key, qint32 value) {
        return text(key).u32(2).u8(0).u32(static_cast<quint32>(value));
    }

    WireBytes& append(const QByteArray& bytes) {
        m_bytes.append(bytes);
        return *this;
    }

    const QByteArray& bytes() const { return m_bytes; }

private:
    WireBytes& u16(quint32 value) { return u8(value >> 8U).u8(value); }

    QByteArray m_bytes;
};

template <typename T>
QByteArray written(const T& record) {
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream.setVersion(QDataStream::Qt_6_0);
    stream << record;
    return bytes;
}

template <typename T>
QDataStream::Status readInto(const QByteArray& bytes, T& record) {
    QDataStream stream(bytes);
    stream.setVersion(QDataStream::Qt_6_0);
    stream >> record;
    return stream.status();
}

// Calls `check` with every change of one byte of `valid`.
template <typename Check>
void forEveryChangedByte(const QByteArray& valid, const Check& check) {
    for (qsizetype at = 0; at < valid.size(); ++at) {
        for (int delta = 1; delta < 256; ++delta) {
            QByteArray changed = valid;
            changed[at] = static_cast<char>(changed[at] ^ delta);
            check(changed);
        }
    }
}

// Drops Qt's messages, of which some tests cause thousands.
class QuietQt {
public:
    QuietQt()
        : m_previous(
              qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {})) {
    }
    ~QuietQt() { qInstallMessageHandler(m_previous); }
    QuietQt(const QuietQt&) = delete;
    QuietQt& operator=(const QuietQt&) = delete;

private:
    QtMessageHandler m_previous;
};

// A car whose fields all differ from the defaults.
inline TLM::SDK::CarInfo filledCar(const QString& carId = QStringLiteral("7")) {
    TLM::SDK::CarInfo car;
    car.setCarId(carId);
    car.setTrackName("Ring");
    car.setTrackConfig("Full");
    car.setSource("Sim");
    car.setCarName("GT3");
    car.setClassName("GT");
    car.setDriverName(QString::fromUtf8("Zo\xC3\xAB"));
    car.setTeamName("Red");
    car.setStatus(TLM::SDK::CarStatus::FlyingLap);
    car.setDetailedTelemetry(false);
    return car;
}

// filledCar() as stream bytes.
inline QByteArray filledCarBytes(const QString& carId = QStringLiteral("7")) {
    return WireBytes()
        .u32(10)
        .textVariant("carId", carId)
        .textVariant("carName", "GT3")
        .textVariant("className", "GT")
        .boolVariant("detailedTelemetry", false)
        .textVariant("driverName", QString::fromUtf8("Zo\xC3\xAB"))
        .textVariant("sourceName", "Sim")
        .intVariant("status", 6)
        .textVariant("teamName", "Red")
        .textVariant("trackConfig", "Full")
        .textVariant("trackName", "Ring")
        .bytes();
}

inline bool sameFields(const TLM::SDK::CarInfo& left, const TLM::SDK::CarInfo& right) {
    return left.carId() == right.carId() && left.trackName() == right.trackName() &&
           left.trackConfig() == right.trackConfig() && left.source() == right.source() &&
           left.carName() == right.carName() && left.className() == right.className() &&
           left.driverName() == right.driverName() && left.teamName() == right.teamName() &&
           left.status() == right.status() && left.detailedTelemetry() == right.detailedTelemetry();
}

// What an empty map reads as.
inline TLM::SDK::CarInfo emptyMapCar() {
    TLM::SDK::CarInfo car;
    car.setStatus(TLM::SDK::CarStatus::NotConnected);
    car.setDetailedTelemetry(false);
    return car;
}

// Whether reading filledCarBytes() into `before` fails and resets the car if cut off at any byte.
template <typename Record>
bool isResetByEveryCut(const Record& before) {
    const QByteArray whole = filledCarBytes();
    for (qsizetype length = 0; length < whole.size(); ++length) {
        Record read = before;
        if (readInto(whole.first(length), read) == QDataStream::Ok ||
            !sameFields(read, emptyMapCar())) {
            return false;
        }
    }
    return true;
}
