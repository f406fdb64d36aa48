#pragma once

#include "sdk/lap.h"
#include "tools/laps/lapformat.h"
#include "tools/laps/newfile.h"
#include "tools/laps/threadend.h"

#include <QDir>
#include <QList>
#include <QObject>
#include <QSharedPointer>
#include <QString>
#include <QStringList>
#include <QThread>

#include <memory>

namespace rataip::laps {

/**
 * Writes laps into a folder, as one file per format with a common name. It does so on a thread of
 * its own: a lap has millions of digits, and its receiver must return before the next tick.
 *
 * A lap that cannot be written is reported by failed(). The next one is tried all the same.
 *
 * The destructor waits until all laps are written and the thread has ended.
 */
class LapExporter : public QObject {
    Q_OBJECT

public:
    LapExporter(const QDir& folder, const QList<LapFormat>& formats);
    ~LapExporter() override;

    /**
     * Queues a lap for writing. The lap MUST NOT be changed any more. Laps without channels are
     * ignored; a source also closes the laps of empty slots.
     */
    void add(const QSharedPointer<TLM::SDK::Lap>& lap);

    /** Waits until every lap is written and its signal emitted. */
    void finish();

signals:
    /** A lap was written. The paths are in the order of the formats. */
    void written(const QStringList& paths);

    /** No file of a lap was written. One sentence says why, without a full stop. */
    void failed(const QString& sentence);

private:
    [[nodiscard]] static NewFiles write(const TLM::SDK::Lap& lap, const QDir& folder,
                                        const QList<LapFormat>& formats);
    void tell(const NewFiles& outcome);

    QDir m_folder;
    QList<LapFormat> m_formats;
    QThread m_thread;
    QObject m_writer;                  // lives on m_thread, where calls queued to it run
    std::unique_ptr<ThreadEnd> m_end;  // of m_thread
};

}  // namespace rataip::laps
