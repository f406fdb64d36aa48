#include "tools/viewer/lapsaving.h"

#include "tools/lapimage/lappicture.h"
#include "tools/laps/lapcsv.h"
#include "tools/laps/lapjson.h"

#include <QDir>
#include <QFileDialog>

namespace rataip::viewer {

using laps::LapExporter;

LapExporter& LapSaving::exporterFor(const QString& folder) {
    std::unique_ptr<LapExporter>& exporter = m_exporters[folder];
    if (!exporter) {
        exporter = std::make_unique<LapExporter>(
            QDir(folder), QList{laps::csvFormat(), laps::jsonFormat(), lapimage::pngFormat()});
        connect(exporter.get(), &LapExporter::written, this, [this](const QStringList& paths) {
            emit ended(QStringLiteral("Saved ") + paths.join(QStringLiteral(", ")));
        });
        connect(exporter.get(), &LapExporter::failed, this, [this](const QString& sentence) {
            emit ended(QStringLiteral("The lap was not saved: %1.").arg(sentence));
        });
    }
    return *exporter;
}

void LapSaving::save(const LapStore::LapPointer& lap, const QString& folder) {
    exporterFor(folder).add(lap);
}

void LapSaving::askAndSave(const LapStore::LapPointer& lap, QWidget& asking) {
    const QString folder = QFileDialog::getExistingDirectory(
        &asking, QStringLiteral("Folder for the lap's files"), m_settings.lapFolder());
    if (!folder.isEmpty()) {
        m_settings.storeLapFolder(folder);
        save(lap, folder);
    }
}

}  // namespace rataip::viewer
