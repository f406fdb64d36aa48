#pragma once

#include "sdk/dynamicdata.h"
#include "sdk/lap.h"

#include <QString>
#include <QUuid>
#include <QtGlobal>

#include <optional>

/** What the session text says of the laps of one car. A part that the text lacks is not there. */
struct LapFacts {
    struct Weekend {
        QString trackName;
        QString trackConfig;
        QUuid sessionId;
        quint64 sessionNumber = 0;
    };
    struct Driver {
        QString name;
        QString carName;
    };

    std::optional<Weekend> weekend;
    std::optional<Driver> driver;
    std::optional<TLM::SDK::Session> session;
    TLM::SDK::DynamicData values;

    /** Puts the facts into a lap. One without values shares these until somebody changes them. */
    void addTo(TLM::SDK::Lap& lap) const;
};
