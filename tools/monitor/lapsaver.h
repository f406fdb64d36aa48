#pragma once

#include "sdk/dataemitter.h"
#include "tools/laps/lapexporter.h"
#include "tools/monitor/console.h"

#include <QObject>
#include <QString>

namespace rataip::monitor {

/**
 * Saves every finished lap as files into a folder and tells the console only what goes wrong; see
 * laps::LapExporter. Laps that cannot be saved stop nothing. What lasts (a full disk) is told once,
 * and again only after a lap could be saved in between. Needs a QGuiApplication.
 */
class LapSaver : public QObject {
    Q_OBJECT

public:
    /** Both must outlive the saver. */
    LapSaver(const TLM::SDK::DataEmitter& emitter, Console& console, const QString& folder);

    /** Waits for the laps that are still being written and sums up. */
    void finish();

    /** Whether every lap so far could be saved. */
    [[nodiscard]] bool hasSavedAll() const { return m_lost == 0; }

private:
    void onSaved();
    void onFailed(const QString& sentence);

    Console& m_console;
    QString m_folder;
    laps::LapExporter m_exporter;
    int m_saved = 0;
    int m_lost = 0;
    bool m_isFailing = false;
};

}  // namespace rataip::monitor
