#pragma once

#include "benchmarks/obvious/texttree.h"
#include "irsdk/layout.h"
#include "reader/recordercar.h"
#include "sdk/lap.h"
#include "sdk/sample.h"

#include <QList>
#include <QSharedPointer>
#include <QString>
#include <QStringList>

namespace obvious {

/** The kind of session that a session's type in the text means; Unknown for any other text. */
[[nodiscard]] TLM::SDK::Session sessionOfType(const QString& type);

/**
 * What iRTelemetryReader does in a tick, in the obvious way: it builds and looks up a key for every
 * element, searches the results for every car, and lists grow as they are appended to. It gives the
 * same samples and laps; iRTelemetryReader is measured and tested against it.
 */
class Reader : public TextTree {
public:
    Reader();

    void setYaml(const char* yaml);
    bool updateCarList();
    void setDiskLoading(bool on);

    void prepareTick();
    void getRawData(const irsdk_header* header, const irsdk_varHeader* vars, const char* data,
                    qint64 dataLength);
    void processData();
    void processLap(int index, bool completed);

    TLM::SDK::Sample& sample(int car) { return m_cars[car].sample; }
    [[nodiscard]] bool isLapReady(int car) const { return m_cars[car].lapReady; }
    [[nodiscard]] QSharedPointer<TLM::SDK::Lap> lap(int car) const { return m_cars[car].lap; }
    RecorderCar& recorderCar(int car) { return m_cars[car]; }

private:
    [[nodiscard]] bool hasOwnCarSlot() const;
    void convert(const irsdk_varHeader& variable, const char* data, int element, QVariant& value);
    void distributeSessionClock();

    [[nodiscard]] bool isSessionRestarted() const;
    void processCar(int index, int sessionNumber, bool sessionChanged);
    void readOwnCar(RecorderCar& car, bool& inPitStall, bool& onPitRoad, bool& onTrack);
    void readOtherCar(int index, int sessionNumber, bool& inPitStall, bool& onPitRoad,
                      bool& onTrack);
    void recordSample(RecorderCar& car);

    void getSessionInfo(int carIdx, TLM::SDK::Lap* lap);
    void addWeekend(TLM::SDK::Lap* lap);
    void addDriver(int carIdx, TLM::SDK::Lap* lap);
    void addSession(TLM::SDK::Lap* lap);
    void preprocessLap(int index);
    void addTimeAndDistance(TLM::SDK::Lap* lap);
    void normalizeChannelBeginning(int index, const QString& name);

    qint32 m_replay = -1;
    QStringList m_varNames;
    QStringList m_varUnits;
    QList<RecorderCar> m_cars;
    qint32 m_myCarIdx = -1;
    bool m_diskLoading = false;
    quint64 m_sessionNum = 0;
    quint64 m_lastSessionNum = 0;
};

}  // namespace obvious
