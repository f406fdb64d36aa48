#pragma once

#include "tools/laps/lapexporter.h"
#include "tools/viewer/lapstore.h"
#include "tools/viewer/settings.h"

#include <QObject>
#include <QString>
#include <QWidget>

#include <map>
#include <memory>

namespace rataip::viewer {

/** Saves laps as CSV, JSON and PNG files into folders that the user chooses. */
class LapSaving : public QObject {
    Q_OBJECT

public:
    /** `settings` must outlive the object. */
    explicit LapSaving(Settings& settings) : m_settings(settings) {}

    /** Writes the lap's files in the background; ended() reports the result. */
    void save(const LapStore::LapPointer& lap, const QString& folder);

    /**
     * Saves the lap into a folder that the user is asked for. The dialog belongs to the window that
     * asks: the dialog of another window would raise that one above it.
     */
    void askAndSave(const LapStore::LapPointer& lap, QWidget& asking);

signals:
    /** A lap was saved, or could not be: a sentence for the user. */
    void ended(const QString& sentence);

private:
    [[nodiscard]] laps::LapExporter& exporterFor(const QString& folder);

    Settings& m_settings;
    std::map<QString, std::unique_ptr<laps::LapExporter>> m_exporters;  // by folder
};

}  // namespace rataip::viewer
