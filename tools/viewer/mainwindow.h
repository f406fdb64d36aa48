#pragma once

#include "tools/viewer/cartablemodel.h"
#include "tools/viewer/lamp.h"
#include "tools/viewer/laplistmodel.h"
#include "tools/viewer/lapsaving.h"
#include "tools/viewer/lapwindow.h"
#include "tools/viewer/livetraces.h"
#include "tools/viewer/outcomeline.h"
#include "tools/viewer/session.h"
#include "tools/viewer/settings.h"
#include "tools/viewer/trackstrip.h"

#include <QAction>
#include <QDockWidget>
#include <QLabel>
#include <QMainWindow>
#include <QPlainTextEdit>
#include <QSettings>
#include <QSortFilterProxyModel>
#include <QTableView>
#include <QTimer>

namespace rataip::viewer {

/**
 * The main window. Creates its parts, connects them and draws the session at its own pace.
 *
 * The source ticks 60 times a second. The window redraws what moves 30 times a second and text 5
 * times a second. While hidden or minimised it draws nothing.
 */
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    /** Both must outlive the window, which keeps its layout in the settings. */
    MainWindow(Session& session, QSettings& settings);

    /** Opens a window for a lap. It closes with this one. */
    LapWindow* openLap(const LapStore::LapPointer& lap);

    /** Redraws everything now. */
    void refresh();

    [[nodiscard]] const LapListModel& laps() const { return m_laps; }
    [[nodiscard]] LapSaving& saving() { return m_saving; }
    [[nodiscard]] QString noticeText() const { return m_notice->text(); }

protected:
    void changeEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    QAction* addCommand(const QString& text, const QKeySequence& shortcut, const QString& tip);
    void makeCommands();
    void makeToolBar();
    void makePanes();
    QDockWidget* addPane(const QString& title, const QKeySequence& shortcut, QWidget* content,
                         Qt::DockWidgetArea area);
    QTableView* makeTable(const QString& name, QSortFilterProxyModel& sorted);
    void arrangePanes();

    void drawMoving();
    void drawReadable();
    void showTicks();
    void showState();
    void showMessage(const QString& text);
    void showOutcome(const QString& sentence);
    void addLap(const LapStore::LapPointer& lap);
    void fitLapColumns();
    [[nodiscard]] QString notice() const;
    [[nodiscard]] LapStore::LapPointer selectedLap();
    void openSelectedLap();
    void saveSelectedLap();
    void askForPlugin();
    void showKeys();

    Session& m_session;
    Settings m_settings;
    LapSaving m_saving{m_settings};
    CarTableModel m_cars;
    LapListModel m_laps;
    QSortFilterProxyModel m_sortedCars;
    QSortFilterProxyModel m_sortedLaps;

    QAction* m_probe = nullptr;
    QAction* m_connect = nullptr;
    QAction* m_disconnect = nullptr;
    QAction* m_openPlugin = nullptr;
    QLabel* m_notice = nullptr;
    OutcomeLine* m_outcome = nullptr;
    Lamp* m_lamp = nullptr;
    QLabel* m_ticks = nullptr;
    TrackStrip* m_strip = nullptr;
    LiveTraces* m_traces = nullptr;
    QTableView* m_carTable = nullptr;
    QTableView* m_lapTable = nullptr;
    QPlainTextEdit* m_messages = nullptr;
    QDockWidget* m_stripPane = nullptr;
    QDockWidget* m_carPane = nullptr;
    QDockWidget* m_lapPane = nullptr;
    QDockWidget* m_messagePane = nullptr;

    QTimer m_drawTimer;
    QTimer m_readTimer;
    quint64 m_tickDrawn = 0;
    host::TickMeter::Clock::time_point m_rateTaken;
    double m_rate = 0.0;
    bool m_isArranged = false;
};

}  // namespace rataip::viewer
