#include "sdk/dataemitter.h"

#include "tests/support/printqt.h"

#include <QCoreApplication>
#include <QDebug>
#include <QMetaMethod>
#include <QMetaType>
#include <QSignalSpy>
#include <QThread>

#include <gtest/gtest.h>

#include <functional>

using TLM::SDK::DataEmitter;
using TLM::SDK::Lap;
using TLM::SDK::LapHeader;
using TLM::SDK::LivePluginInfo;
using TLM::SDK::Sample;
using TLM::SDK::SessionInfo;

namespace {

QMetaMethod signalAt(int index) {
    const QMetaObject& meta = DataEmitter::staticMetaObject;
    return meta.method(meta.methodOffset() + index);
}

}  // namespace

TEST(DataEmitter, HasTwelveSignalsInOrderWithTheirParameters) {
    const struct {
        const char* signature;
        QList<QByteArray> parameters;
    } rows[] = {
        {"sendConnected()", {}},
        {"sendDisconnected()", {}},
        {"sendNotConnected()", {}},
        {"sendConnectivityAvailable(bool)", {"available"}},
        {"sendTelemetryLap(QSharedPointer<TLM::SDK::Lap>)", {""}},
        {"sendTelemetryLapHeader(TLM::SDK::LapHeader)", {"header"}},
        {"sendCarListChanged(TLM::SDK::LivePluginInfo)", {"pluginInfo"}},
        {"sendSample(TLM::SDK::Sample)", {"sample"}},
        {"sendSamples(QList<TLM::SDK::Sample>)", {"samples"}},
        {"sendSessionInfo(TLM::SDK::SessionInfo)", {"sessionInfo"}},
        {"sendMessage(QString,int)", {"message", "verbose"}},
        {"sendProgress(int)", {"percent"}},
    };
    const QMetaObject& meta = DataEmitter::staticMetaObject;
    EXPECT_STREQ(meta.className(), "TLM::SDK::DataEmitter");
    EXPECT_EQ(meta.methodCount() - meta.methodOffset(), 12);
    int index = 0;
    for (const auto& row : rows) {
        const QMetaMethod method = signalAt(index);
        EXPECT_EQ(method.methodType(), QMetaMethod::Signal) << index;
        EXPECT_EQ(method.methodSignature().toStdString(), row.signature);
        EXPECT_EQ(method.parameterNames(), row.parameters) << index;
        ++index;
    }
}

TEST(DataEmitter, TakesAParentAndHasNoneByDefault) {
    QObject parent;
    EXPECT_EQ(DataEmitter().parent(), nullptr);
    const auto* const child = new DataEmitter(&parent);
    EXPECT_EQ(child->parent(), &parent);
}

TEST(DataEmitter, RegistersItsTypesUnderTheirQualifiedNames) {
    const DataEmitter emitter;
    const struct {
        const char* name;
        QMetaType type;
    } rows[] = {
        {"TLM::SDK::Sample", QMetaType::fromType<Sample>()},
        {"QList<TLM::SDK::Sample>", QMetaType::fromType<QList<Sample>>()},
        {"TLM::SDK::LapHeader", QMetaType::fromType<LapHeader>()},
        {"TLM::SDK::LivePluginInfo", QMetaType::fromType<LivePluginInfo>()},
        {"TLM::SDK::SessionInfo", QMetaType::fromType<SessionInfo>()},
        {"QSharedPointer<TLM::SDK::Lap>", QMetaType::fromType<QSharedPointer<Lap>>()},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(QMetaType::fromName(row.name), row.type) << row.name;
        EXPECT_STREQ(row.type.name(), row.name);
    }
    EXPECT_STREQ(QMetaType::fromType<DataEmitter*>().name(), "TLM::SDK::DataEmitter*");
}

TEST(DataEmitter, RegistersStreamOperatorsForTheRecordsThatHaveAStreamFormat) {
    EXPECT_TRUE(QMetaType::fromType<Sample>().hasRegisteredDataStreamOperators());
    EXPECT_TRUE(QMetaType::fromType<QList<Sample>>().hasRegisteredDataStreamOperators());
    EXPECT_TRUE(QMetaType::fromType<LapHeader>().hasRegisteredDataStreamOperators());
    EXPECT_TRUE(QMetaType::fromType<LivePluginInfo>().hasRegisteredDataStreamOperators());
    EXPECT_FALSE(QMetaType::fromType<SessionInfo>().hasRegisteredDataStreamOperators());
}

TEST(DataEmitter, ComparesAndPrintsSharedLapsByPointer) {
    QMetaType type = QMetaType::fromType<QSharedPointer<Lap>>();
    const auto first = QSharedPointer<Lap>::create();
    const auto second = QSharedPointer<Lap>::create();
    const QSharedPointer<Lap> same = first;
    EXPECT_TRUE(type.equals(&first, &same));
    EXPECT_FALSE(type.equals(&first, &second));

    const bool firstIsLower = std::less<>()(first.data(), second.data());
    EXPECT_EQ(type.compare(&first, &second),
              firstIsLower ? QPartialOrdering::Less : QPartialOrdering::Greater);
    EXPECT_EQ(type.compare(&first, &same), QPartialOrdering::Equivalent);

    QString printed;
    QDebug debug(&printed);
    ASSERT_TRUE(type.debugStream(debug, &first));
    QString expected;
    QDebug(&expected).nospace() << "QSharedPointer(" << static_cast<void*>(first.data()) << ")";
    EXPECT_EQ(printed.trimmed(), expected.trimmed());
}

TEST(DataEmitter, DeliversTheStatesOfAConnection) {
    DataEmitter emitter;
    QSignalSpy connected(&emitter, &DataEmitter::sendConnected);
    QSignalSpy disconnected(&emitter, &DataEmitter::sendDisconnected);
    QSignalSpy notConnected(&emitter, &DataEmitter::sendNotConnected);
    QSignalSpy available(&emitter, &DataEmitter::sendConnectivityAvailable);
    emit emitter.sendConnected();
    EXPECT_EQ(connected.size(), 1);
    EXPECT_EQ(disconnected.size(), 0);
    emit emitter.sendDisconnected();
    EXPECT_EQ(disconnected.size(), 1);
    EXPECT_EQ(notConnected.size(), 0);
    emit emitter.sendNotConnected();
    EXPECT_EQ(notConnected.size(), 1);
    EXPECT_EQ(connected.size(), 1);
    emit emitter.sendConnectivityAvailable(true);
    ASSERT_EQ(available.size(), 1);
    EXPECT_TRUE(available[0][0].toBool());
}

TEST(DataEmitter, DeliversPayloadsAsTheyAre) {
    DataEmitter emitter;
    QSignalSpy messages(&emitter, &DataEmitter::sendMessage);
    QSignalSpy progress(&emitter, &DataEmitter::sendProgress);
    QSignalSpy sessionInfos(&emitter, &DataEmitter::sendSessionInfo);
    QSignalSpy laps(&emitter, &DataEmitter::sendTelemetryLap);
    emit emitter.sendMessage("hello", 3);
    emit emitter.sendProgress(40);
    emit emitter.sendSessionInfo(SessionInfo());
    const auto lap = QSharedPointer<Lap>::create();
    emit emitter.sendTelemetryLap(lap);
    ASSERT_EQ(messages.size(), 1);
    EXPECT_EQ(messages[0][0].toString(), "hello");
    EXPECT_EQ(messages[0][1].toInt(), 3);
    EXPECT_EQ(progress.size(), 1);
    EXPECT_EQ(sessionInfos.size(), 1) << "an empty record is delivered too";
    ASSERT_EQ(laps.size(), 1);
    EXPECT_EQ(laps[0][0].value<QSharedPointer<Lap>>(), lap);
}

TEST(DataEmitter, DeliversEveryPayloadQueuedToAnotherThread) {
    int argumentCount = 1;
    char programName[] = "sdk-tests";
    char* arguments[] = {programName, nullptr};
    const QCoreApplication application(argumentCount, arguments);

    DataEmitter emitter;
    QThread thread;
    QObject receiver;
    receiver.moveToThread(&thread);
    QStringList received;
    const auto lap = QSharedPointer<Lap>::create();
    const auto note = [&received](const QString& what) { received.append(what); };
    QObject::connect(&emitter, &DataEmitter::sendSample, &receiver, [&](const Sample& sample) {
        note("sample " + sample.carId() + ' ' + sample.value("speed").print());
    });
    QObject::connect(
        &emitter, &DataEmitter::sendSamples, &receiver,
        [&](const QList<Sample>& samples) { note("samples " + QString::number(samples.size())); });
    QObject::connect(&emitter, &DataEmitter::sendTelemetryLapHeader, &receiver,
                     [&](const LapHeader& header) { note("header " + header.pluginName()); });
    QObject::connect(&emitter, &DataEmitter::sendCarListChanged, &receiver,
                     [&](const LivePluginInfo& info) { note("cars " + info.sourceName()); });
    QObject::connect(&emitter, &DataEmitter::sendSessionInfo, &receiver,
                     [&](const SessionInfo&) { note("session"); });
    QObject::connect(&emitter, &DataEmitter::sendTelemetryLap, &receiver,
                     [&](const QSharedPointer<Lap>& shared) {
                         note(shared == lap ? "lap" : "another lap");
                         thread.quit();
                     });
    thread.start();

    Sample sample;
    sample.setCarId("5");
    sample.setValue("speed", 1.5, "m/s");
    emit emitter.sendSample(sample);
    emit emitter.sendSamples({sample, sample});
    LapHeader header;
    header.setPlugin("P");
    emit emitter.sendTelemetryLapHeader(header);
    LivePluginInfo info;
    info.setSourceName("S");
    emit emitter.sendCarListChanged(info);
    emit emitter.sendSessionInfo(SessionInfo());
    emit emitter.sendTelemetryLap(lap);

    ASSERT_TRUE(thread.wait());
    EXPECT_EQ(received, QStringList({"sample 5 1.5 m/s", "samples 2", "header P", "cars S",
                                     "session", "lap"}));
}
