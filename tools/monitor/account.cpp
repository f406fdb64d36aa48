#include "tools/monitor/account.h"

#include "sdk/carstatus.h"
#include "tools/host/laptext.h"

#include <chrono>

namespace rataip::monitor {

using TLM::SDK::CarInfo;
using TLM::SDK::DataEmitter;
using TLM::SDK::Lap;
using TLM::SDK::LapHeader;
using TLM::SDK::LivePluginInfo;
using TLM::SDK::Sample;

namespace {

using Clock = host::TickMeter::Clock;

constexpr std::chrono::milliseconds kStatusIntervalOnTerminal{500};
// Less often, because the lines pile up in a log.
constexpr std::chrono::milliseconds kStatusIntervalElsewhere{5000};

constexpr qsizetype kCarIdWidth = 2;
constexpr qsizetype kDriverWidth = 22;
constexpr qsizetype kTeamWidth = 22;
constexpr qsizetype kCarWidth = 26;
constexpr qsizetype kClassWidth = 10;
constexpr qsizetype kTypeWidth = 7;
constexpr qsizetype kCompletionWidth = 13;
constexpr qsizetype kTimeWidth = 11;
constexpr qsizetype kSamplesWidth = 5;

/** "* 7  Driver": the star marks the own car, the only one with complete telemetry. */
QString carText(const CarInfo& car) {
    const QChar mark = car.detailedTelemetry() ? QLatin1Char('*') : QLatin1Char(' ');
    return mark + car.carId().rightJustified(kCarIdWidth) + QStringLiteral("  ") +
           car.driverName().leftJustified(kDriverWidth);
}

QString carListText(const CarInfo& car) {
    QString text = QStringLiteral("  %1  %2  %3  %4")
                       .arg(carText(car), car.teamName().leftJustified(kTeamWidth),
                            car.carName().leftJustified(kCarWidth),
                            car.className().leftJustified(kClassWidth));
    // A source lists its cars before it knows their status.
    if (car.status() != TLM::SDK::CarStatus::Undefined) {
        text += QStringLiteral("  ") + TLM::SDK::carStatusToString(car.status());
    }
    while (text.endsWith(QLatin1Char(' '))) {
        text.chop(1);
    }
    return text;
}

QString headerText(const LapHeader& header) {
    return QStringLiteral("%1  %2  %3  %4")
        .arg(carText(header), host::lapTypeText(header.lapType()).leftJustified(kTypeWidth),
             host::completionText(header.completed()).leftJustified(kCompletionWidth),
             host::lapTimeText(header.lapTime()).rightJustified(kTimeWidth));
}

QString lapText(const Lap& lap) {
    return QStringLiteral("Lap  %1  %2 samples  %3 channels")
        .arg(headerText(lap), QString::number(lap.size()).rightJustified(kSamplesWidth),
             QString::number(host::channelCount(lap)));
}

}  // namespace

Account::Account(const DataEmitter& emitter, Console& console)
    : m_console(console), m_ticks(Clock::now()) {
    m_statusTimer.setInterval(console.isTerminal() ? kStatusIntervalOnTerminal
                                                   : kStatusIntervalElsewhere);
    connect(&m_statusTimer, &QTimer::timeout, this, &Account::showStatus);

    connect(&emitter, &DataEmitter::sendConnected, this, &Account::onConnected);
    connect(&emitter, &DataEmitter::sendDisconnected, this, &Account::onDisconnected);
    connect(&emitter, &DataEmitter::sendNotConnected, this, &Account::onNotConnected);
    connect(&emitter, &DataEmitter::sendConnectivityAvailable, this,
            &Account::onConnectivityAvailable);
    connect(&emitter, &DataEmitter::sendTelemetryLap, this, &Account::onTelemetryLap);
    connect(&emitter, &DataEmitter::sendTelemetryLapHeader, this, &Account::onTelemetryLapHeader);
    connect(&emitter, &DataEmitter::sendCarListChanged, this, &Account::onCarListChanged);
    connect(&emitter, &DataEmitter::sendSample, this, &Account::onSample);
    connect(&emitter, &DataEmitter::sendSamples, this, &Account::onSamples);
    connect(&emitter, &DataEmitter::sendSessionInfo, this, &Account::onSessionInfo);
    connect(&emitter, &DataEmitter::sendMessage, this, &Account::onMessage);
    connect(&emitter, &DataEmitter::sendProgress, this, &Account::onProgress);
}

void Account::showWaiting() {
    m_console.print(QStringLiteral("Waiting for the simulator ..."));
}

void Account::showNoSimulator() {
    m_console.print(
        QStringLiteral("No simulator delivers data; start one, or wait longer with --wait"));
}

void Account::showSummary() {
    m_statusTimer.stop();
    m_console.setStatus({});
    m_console.print(QStringLiteral("%1 laps, %2 ticks received, %3 lost, %4 connections")
                        .arg(m_laps)
                        .arg(m_ticks.received())
                        .arg(m_ticks.lost())
                        .arg(m_connections));
}

void Account::onConnected() {
    ++m_connections;
    m_ticks.beginConnection(Clock::now());
    m_statusTimer.start();
}

void Account::onDisconnected() {
    m_statusTimer.stop();
    m_console.setStatus({});
}

// showWaiting() reports failed attempts, once for many of them.
void Account::onNotConnected() {}

void Account::onConnectivityAvailable(bool available) {
    m_console.print(available ? QStringLiteral("The simulator can be reached")
                              : QStringLiteral("The simulator cannot be reached"));
}

void Account::onTelemetryLap(const QSharedPointer<Lap>& lap) {
    if (!lap->isEmpty()) {
        ++m_laps;
        m_console.print(lapText(*lap));
    }
}

void Account::onTelemetryLapHeader(const LapHeader& header) {
    m_console.print(QStringLiteral("Lap announced  ") + headerText(header));
}

void Account::onCarListChanged(const LivePluginInfo& pluginInfo) {
    const qsizetype countBefore = m_cars.count();
    const QList<CarInfo> news = m_cars.update(pluginInfo);
    if (news.isEmpty() && m_cars.count() == countBefore) {
        return;
    }
    m_console.print(QStringLiteral("%1 cars, of which new or changed: %2")
                        .arg(m_cars.count())
                        .arg(news.size()));
    for (const CarInfo& car : news) {
        m_console.print(carListText(car));
    }
}

void Account::onSample(const Sample& sample) {
    onSamples({sample});
}

void Account::onSamples(const QList<Sample>& samples) {
    m_ticks.add(host::sessionTick(samples));
}

// The record is empty; laps carry what is known about the session.
void Account::onSessionInfo() {}

void Account::onMessage(const QString& message) {
    m_console.print(message);
}

void Account::onProgress(int percent) {
    m_console.print(QStringLiteral("Progress: %1 %").arg(percent));
}

void Account::showStatus() {
    const double rate = m_ticks.takeRate(Clock::now());
    m_console.setStatus(QStringLiteral("%1 ticks/s, %2 lost; %3 cars, %4 on track, %5 in the pits; "
                                       "%6 laps")
                            .arg(rate, 0, 'f', 1)
                            .arg(m_ticks.lost())
                            .arg(m_cars.count())
                            .arg(m_cars.countOnTrack())
                            .arg(m_cars.countInPits())
                            .arg(m_laps));
}

}  // namespace rataip::monitor
