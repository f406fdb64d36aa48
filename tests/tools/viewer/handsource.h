#pragma once

#include "sdk/plugininterfacelive.h"

#include <QList>

/** A live source that delivers what the test tells it to. */
class HandSource : public TLM::SDK::PluginInterfaceLive {
public:
    void initialize() override { ++initialized; }
    void saveSettings(const QString&) override {}
    void loadSettings(const QString&) override {}
    QString sourceName() const override { return QStringLiteral("Hand"); }
    QString pluginName() const override { return QStringLiteral("Hand Plugin"); }
    QString pluginVersion() const override { return QStringLiteral("1.0"); }
    void checkConnectionAvailability() override {
        emit dataEmitter()->sendConnectivityAvailable(isThere);
    }
    void connectToSource() override {
        if (isThere) {
            connected = true;
            emit dataEmitter()->sendConnected();
        } else {
            emit dataEmitter()->sendNotConnected();
        }
    }
    void disconnectFromSource() override {
        if (connected) {
            connected = false;
            emit dataEmitter()->sendDisconnected();
        }
    }

    /** Sends a list of cars. The one in slot `own` is the user's. */
    void sendCars(int count, int own) {
        TLM::SDK::LivePluginInfo info;
        for (int slot = 0; slot < count; ++slot) {
            TLM::SDK::CarInfo car;
            car.setCarId(QString::number(slot));
            car.setDriverName(QStringLiteral("Driver %1").arg(slot));
            car.setTeamName(QStringLiteral("Northern Apex Racing"));
            car.setCarName(QStringLiteral("Kestrel GT Evo"));
            car.setClassName(QStringLiteral("Touring"));
            car.setStatus(static_cast<TLM::SDK::CarStatus>(slot % 9));
            car.setDetailedTelemetry(slot == own);
            info.cars.append(car);
        }
        emit dataEmitter()->sendCarListChanged(info);
    }

    /** Sends a tick in which car k is k hundredths of a lap behind `share`. */
    void sendTick(int count, int own, quint64 tick, double share) {
        QList<TLM::SDK::Sample> samples(count);
        for (int slot = 0; slot < count; ++slot) {
            TLM::SDK::Sample& sample = samples[slot];
            double place = share - 0.01 * slot;
            place = place < 0.0 ? place + 1.0 : place;
            sample.setValue(QStringLiteral("lapdistpct"), place, {});
            sample.setValue(QStringLiteral("lap"), 5, {});
            sample.setValue(QStringLiteral("lastlaptime"), 83.4567, QStringLiteral("s"));
            sample.setValue(QStringLiteral("sessiontick"), tick, {});
        }
        TLM::SDK::Sample& sample = samples[own];
        sample.setValue(QStringLiteral("laplastlaptime"), 81.0, QStringLiteral("s"));
        sample.setValue(QStringLiteral("speed"), 50.0F, QStringLiteral("m/s"));
        sample.setValue(QStringLiteral("throttle"), 0.75F, QStringLiteral("%"));
        sample.setValue(QStringLiteral("brake"), 0.0F, QStringLiteral("%"));
        sample.setValue(QStringLiteral("gear"), 4, {});
        sample.setValue(QStringLiteral("steeringwheelangle"), 0.5F, QStringLiteral("rad"));
        emit dataEmitter()->sendSamples(samples);
    }

    int initialized = 0;
    bool isThere = true;
};
