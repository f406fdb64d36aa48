#pragma once

#include "sdk/dataemitter.h"
#include "tools/laps/lapexporter.h"
#include "tools/monitor/console.h"

#include <QObject>
#include <QString>

namespace rataip::monitor {

/**
 * Saves every finished lap into a folder and prints failures on the console; see laps::LapExporter.
 * Goes on after a failure. Repeated failures (a full disk) are printed once, and again only after a
 * lap could be saved in between. Needs a QGuiApplication.
 */
class LapSaver : public QObject {
    Q_OBJECT

public:
    /** Both must outlive the saver. */
    LapSaver(const TLM::SDK::DataEmitter& emitter, Console& console, const QString& folder);

    /** Waits for the laps that are still being written and prints a summary. */
    void finish();

    /** Whether every lap so far was saved. */
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
