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
 * Writes laps as files into a folder, a file for each format and all of a lap under one name, on a
 * thread of its own: a lap has millions of digits, and whoever receives it must be back before the
 * next tick.
 *
 * What cannot be written is told by failed(), and the next lap is tried like any other.
 *
 * Every lap that was added is written before the object is gone, and so is its thread.
 */
class LapExporter : public QObject {
    Q_OBJECT

public:
    LapExporter(const QDir& folder, const QList<LapFormat>& formats);
    ~LapExporter() override;

    /**
     * Takes a lap over to write it; the lap MUST NOT be changed any more. Laps without channels
     * (a source closes those of empty slots, too) are left out.
     */
    void add(const QSharedPointer<TLM::SDK::Lap>& lap);

    /** Waits until every lap is written; all signals are out when it returns. */
    void finish();

signals:
    /** A lap is written: the paths of its files in the order of the formats. */
    void written(const QStringList& paths);

    /** A lap is not written, not in part either: one sentence why, without a full stop. */
    void failed(const QString& sentence);

private:
    [[nodiscard]] static NewFiles write(const TLM::SDK::Lap& lap, const QDir& folder,
                                        const QList<LapFormat>& formats);
    void tell(const NewFiles& outcome);

    QDir m_folder;
    QList<LapFormat> m_formats;
    QThread m_thread;
    QObject m_writer;                  // lives on m_thread, so that calls queued to it run there
    std::unique_ptr<ThreadEnd> m_end;  // of m_thread
};

}  // namespace rataip::laps
