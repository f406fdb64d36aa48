#include "tools/monitor/lapsaver.h"

#include "tools/lapimage/pngformat.h"
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
    connect(&m_exporter, &LapExporter::written, this, [this] { ++m_saved; });
    connect(&m_exporter, &LapExporter::failed, this, [this](const QString& sentence) {
        m_console.print(QStringLiteral("A lap was not saved: ") + sentence);
    });
}

void LapSaver::finish() {
    m_exporter.finish();
    m_console.print(
        QStringLiteral("%1 laps saved in %2").arg(m_saved).arg(QDir::toNativeSeparators(m_folder)));
}

}  // namespace rataip::monitor
