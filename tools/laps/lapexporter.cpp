#include "tools/laps/lapexporter.h"

#include "tools/laps/lapname.h"

#include <QCoreApplication>
#include <QEvent>

namespace rataip::laps {

using TLM::SDK::Lap;

LapExporter::LapExporter(const QDir& folder, const QList<LapFormat>& formats)
    : m_folder(folder), m_formats(formats) {
    m_writer.moveToThread(&m_thread);
    connect(&m_thread, &QThread::started, &m_writer,
            [this] { m_end = std::make_unique<ThreadEnd>(); });
    m_thread.start();
}

LapExporter::~LapExporter() {
    // Queued, so that the thread quits after writing the laps.
    QMetaObject::invokeMethod(
        &m_writer, [this] { m_thread.quit(); }, Qt::QueuedConnection);
    m_thread.wait();
    // The program may be about to end.
    if (m_end) {
        m_end->wait();
    }
}

void LapExporter::add(const QSharedPointer<Lap>& lap) {
    if (lap->isEmpty()) {
        return;
    }
    QMetaObject::invokeMethod(
        &m_writer,
        [this, lap] {
            const NewFiles outcome = write(*lap, m_folder, m_formats);
            QMetaObject::invokeMethod(
                this, [this, outcome] { tell(outcome); }, Qt::QueuedConnection);
        },
        Qt::QueuedConnection);
}

void LapExporter::finish() {
    QMetaObject::invokeMethod(
        &m_writer, [] {}, Qt::BlockingQueuedConnection);
    QCoreApplication::sendPostedEvents(this, QEvent::MetaCall);
}

NewFiles LapExporter::write(const Lap& lap, const QDir& folder, const QList<LapFormat>& formats) {
    const QString error = makeFolder(folder.path());
    if (!error.isEmpty()) {
        return {{}, error};
    }
    QList<FileContent> contents;
    for (const LapFormat& format : formats) {
        contents.append({format.suffix,
                         [&lap, &format](QIODevice& device) { return format.write(lap, device); }});
    }
    return writeNewFiles(folder, lapFileName(lap), contents);
}

void LapExporter::tell(const NewFiles& outcome) {
    if (outcome.error.isEmpty()) {
        emit written(outcome.paths);
    } else {
        emit failed(outcome.error);
    }
}

}  // namespace rataip::laps
