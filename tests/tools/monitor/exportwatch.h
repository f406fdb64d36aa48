#pragma once

#include "tests/tools/backgroundprogram.h"

#include <QString>
#include <QStringList>

#include <string>

/** The monitor, saving laps, with a simulator whose first laps are over within seconds. */
class ExportWatch {
public:
    /** `wrapper` is what starts the monitor in its place: a program and its own arguments. */
    explicit ExportWatch(const QString& exportFolder, const QStringList& wrapper = {})
        : m_simulator(QStringLiteral(SIMULATOR_PROGRAM),
                      {QStringLiteral("--cars"), QStringLiteral("4"), QStringLiteral("--track"),
                       QStringLiteral("short"), QStringLiteral("--speed"), QStringLiteral("8")}),
          m_monitor((wrapper + monitor(exportFolder)).constFirst(),
                    (wrapper + monitor(exportFolder)).mid(1)) {}

    [[nodiscard]] int waitForEnd() { return m_monitor.waitForEnd(); }
    [[nodiscard]] std::string output() const { return m_monitor.output(); }

private:
    static QStringList monitor(const QString& exportFolder) {
        return {QStringLiteral(MONITOR_PROGRAM),
                QStringLiteral("--wait"),
                QStringLiteral("20"),
                QStringLiteral("--laps"),
                QStringLiteral("4"),
                QStringLiteral("--export"),
                exportFolder};
    }

    BackgroundProgram m_simulator;
    BackgroundProgram m_monitor;
};
