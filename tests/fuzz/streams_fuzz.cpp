#include "sdk/carinfo.h"
#include "sdk/lapheader.h"
#include "sdk/liveplugininfo.h"
#include "sdk/sample.h"
#include "tests/fuzz/fuzztarget.h"
#include "tests/fuzz/quietqt.h"
#include "tests/fuzz/streamrecords.h"
#include "tests/sdk/streams.h"

#include <QByteArray>
#include <QDataStream>
#include <QMetaType>

#include <iterator>
#include <utility>

// The first byte of the input chooses the record and the stream version, the rest is the record.

namespace {

using fuzz::require;
using fuzz::StreamRecord;
using TLM::SDK::CarInfo;
using TLM::SDK::LapHeader;
using TLM::SDK::LivePluginInfo;
using TLM::SDK::Sample;

struct Input {
    QByteArray bytes;
    QDataStream::Version version;
};

/** Reads a record; returns the status of the stream. */
template <typename Record>
QDataStream::Status readRecord(const Input& input, Record& record) {
    QDataStream stream(input.bytes);
    stream.setVersion(input.version);
    stream >> record;
    return stream.status();
}

template <typename Record>
Record throughAStream(const Input& input, const Record& record) {
    Input again{{}, input.version};
    QDataStream stream(&again.bytes, QIODevice::WriteOnly);
    stream.setVersion(input.version);
    stream << record;
    Record copy;
    require(readRecord(again, copy) == QDataStream::Ok, "what was written can be read");
    return copy;
}

void readCar(const Input& input) {
    CarInfo car = filledCar();
    if (readRecord(input, car) != QDataStream::Ok) {
        require(sameFields(car, emptyMapCar()), "a stream that fails leaves an empty car");
    }
    require(sameFields(throughAStream(input, car), car), "a car survives a stream");
}

/** A record derived from a car keeps its other members. */
template <typename Record>
void readDerived(const Input& input) {
    Record record;
    record.setValue(QStringLiteral("speed"), 1.0, QStringLiteral("m/s"));
    CarInfo car;
    const QDataStream::Status status = readRecord(input, record);
    require(readRecord(input, car) == status, "a derived record is read as its car");
    require(sameFields(record, car), "a derived record is read as its car");
    require(record.valueNameList() == QStringList(QStringLiteral("speed")), "values stay");
}

void readInfo(const Input& input) {
    LivePluginInfo info;
    info.cars.append(filledCar());
    static_cast<void>(readRecord(input, info));
    const LivePluginInfo copy = throughAStream(input, info);
    require(copy.pluginName() == info.pluginName() && copy.sourceName() == info.sourceName(),
            "the names survive a stream");
    require(copy.cars.size() == info.cars.size(), "every car survives a stream");
    for (qsizetype i = 0; i < copy.cars.size(); ++i) {
        require(sameFields(copy.cars[i], info.cars[i]), "every car survives a stream");
    }
}

void readList(const Input& input) {
    QList<Sample> samples{Sample()};
    if (readRecord(input, samples) != QDataStream::Ok) {
        require(samples.isEmpty(), "a stream that fails leaves no samples");
    }
    const QList<Sample> copy = throughAStream(input, samples);
    require(copy.size() == samples.size(), "every sample survives a stream");
    for (qsizetype i = 0; i < copy.size(); ++i) {
        require(sameFields(copy[i], samples[i]), "every sample survives a stream");
    }
}

void loadList(const Input& input) {
    QList<Sample> read;
    QList<Sample> loaded;
    const QDataStream::Status status = readRecord(input, read);
    QDataStream stream(input.bytes);
    stream.setVersion(input.version);
    QMetaType::fromType<QList<Sample>>().load(stream, &loaded);
    require(stream.status() == status && loaded.size() == read.size(),
            "the meta-type reads as the operator does");
}

}  // namespace

int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
    fuzz::silenceQt();
    return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const int choice = data[0];
    const auto record = static_cast<StreamRecord>(choice % fuzz::kStreamRecords);
    const auto version =
        static_cast<std::size_t>(choice / fuzz::kStreamRecords) % std::size(fuzz::kStreamVersions);
    const Input input{
        QByteArray(reinterpret_cast<const char*>(data + 1), static_cast<qsizetype>(size) - 1),
        fuzz::kStreamVersions[version]};
    if (!fuzz::staysWithinRecords(record, input.bytes)) {
        return 0;
    }
    switch (record) {
        case StreamRecord::CarInfo:
            readCar(input);
            break;
        case StreamRecord::Sample:
            readDerived<Sample>(input);
            break;
        case StreamRecord::LapHeader:
            readDerived<LapHeader>(input);
            break;
        case StreamRecord::LivePluginInfo:
            readInfo(input);
            break;
        case StreamRecord::SampleList:
            readList(input);
            break;
        case StreamRecord::LoadedList:
            loadList(input);
            break;
    }
    return 0;
}
