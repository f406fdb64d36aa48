#pragma once

#include "sdk/lap.h"

#include <QSharedPointer>

#include <cmath>

/** The value of a missing reading. */
inline constexpr double kMissing = static_cast<double>(1e25F);

inline QSharedPointer<TLM::SDK::Channel> channelWith(const QList<double>& samples,
                                                     const QString& unit = QString()) {
    auto channel = QSharedPointer<TLM::SDK::Channel>::create();
    channel->samples = samples;
    channel->setUnit(unit);
    return channel;
}

/** A flying lap of the own car over 4 km in 100 s, with all channels that are drawn. */
inline QSharedPointer<TLM::SDK::Lap> ownLap(int number = 4, int size = 1200) {
    auto lap = QSharedPointer<TLM::SDK::Lap>::create();
    lap->setCarId(QStringLiteral("3"));
    lap->setDriverName(QStringLiteral("Ada Berg"));
    lap->setCarName(QStringLiteral("Arden V8 GT"));
    lap->setTrackName(QStringLiteral("Grand Circuit"));
    lap->setLapInSession(number);
    lap->setLapType(TLM::SDK::LapType::FlyingLap);
    lap->setSession(TLM::SDK::Session::Practice);
    lap->setCompleted(true);
    lap->setLapTime(QTime(0, 1, 34, 512));
    lap->setValue(QStringLiteral("Track length"), 4.0, QStringLiteral("km"));
    QList<double> share;
    QList<double> clock;
    QList<double> distance;
    QList<double> speed;
    QList<double> throttle;
    QList<double> brake;
    QList<double> gear;
    QList<double> steering;
    for (int i = 0; i < size; ++i) {
        const double part = static_cast<double>(i) / size;
        const double wave = std::sin(20.0 * part + number);
        share.append(part);
        clock.append(500.0 + 100.0 * part);
        distance.append(4000.0 * part);
        speed.append(45.0 + 20.0 * wave);
        throttle.append(wave > 0.0 ? wave : 0.0);
        brake.append(wave < 0.0 ? -wave : 0.0);
        gear.append(std::floor(4.0 + 2.0 * wave));
        steering.append(0.4 * wave);
    }
    lap->addChannel(channelWith(share, QStringLiteral("pu")), QStringLiteral("lapdistpct"));
    lap->addChannel(channelWith(clock, QStringLiteral("s")), QStringLiteral("sessiontime"));
    lap->addChannel(channelWith(distance, QStringLiteral("m")), QStringLiteral("lapdist"));
    lap->addChannel(channelWith(speed, QStringLiteral("m/s")), QStringLiteral("speed"));
    lap->addChannel(channelWith(throttle, QStringLiteral("pu")), QStringLiteral("throttle"));
    lap->addChannel(channelWith(brake, QStringLiteral("pu")), QStringLiteral("brake"));
    lap->addChannel(channelWith(gear), QStringLiteral("gear"));
    lap->addChannel(channelWith(steering, QStringLiteral("rad")),
                    QStringLiteral("steeringwheelangle"));
    return lap;
}

/** A lap of another car, without pedals and steering. */
inline QSharedPointer<TLM::SDK::Lap> otherLap(int slot = 7, int size = 1200) {
    QSharedPointer<TLM::SDK::Lap> lap = ownLap(4, size);
    lap->setCarId(QString::number(slot));
    lap->setDriverName(QStringLiteral("Björn Kowalski"));
    lap->setDetailedTelemetry(false);
    for (const char* name : {"throttle", "brake", "steeringwheelangle"}) {
        lap->removeChannel(QString::fromLatin1(name));
    }
    return lap;
}
