#include "tools/monitor/lapsaver.h"

#include "tools/lapimage/lappicture.h"
#include "tools/laps/lapcsv.h"
#include "tools/laps/lapjson.h"

#include <QDir>

namespace rataip::monitor {

using laps::LapExporter;

LapSaver::LapSaver(const TLM::SDK::DataEmitter& emitter, Console& console, const QString& folder)
    : m_console(console),
      m_folder(QDir(folder).absolutePath()),
      m_exporter(QDir(m_folder), {laps::csvFormat(), laps::jsonFormat(), lapimage::pngFormat()}) {
    connect(&emitter, &TLM::SDK::DataEmitter::sendTelemetryLap, &m_exporter, &LapExporter::add);
    connect(&m_exporter, &LapExporter::written, this, &LapSaver::onSaved);
    connect(&m_exporter, &LapExporter::failed, this, &LapSaver::onFailed);
}

void LapSaver::finish() {
    m_exporter.finish();
    const QString folder = QDir::toNativeSeparators(m_folder);
    m_console.print(hasSavedAll() ? QStringLiteral("%1 laps saved in %2").arg(m_saved).arg(folder)
                                  : QStringLiteral("%1 of %2 laps saved, %3 not, in %4")
                                        .arg(m_saved)
                                        .arg(m_saved + m_lost)
                                        .arg(m_lost)
                                        .arg(folder));
}

void LapSaver::onSaved() {
    ++m_saved;
    m_isFailing = false;
}

void LapSaver::onFailed(const QString& sentence) {
    ++m_lost;
    if (!m_isFailing) {
        m_console.print(QStringLiteral("A lap was not saved: ") + sentence);
    }
    m_isFailing = true;
}

}  // namespace rataip::monitor
