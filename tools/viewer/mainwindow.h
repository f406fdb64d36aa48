#pragma once

#include "tools/laps/lapexporter.h"
#include "tools/viewer/cartablemodel.h"
#include "tools/viewer/lamp.h"
#include "tools/viewer/laplistmodel.h"
#include "tools/viewer/lapwindow.h"
#include "tools/viewer/livetraces.h"
#include "tools/viewer/outcomeline.h"
#include "tools/viewer/session.h"
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

#include <map>
#include <memory>

namespace rataip::viewer {

/**
 * The window: what a session delivers, drawn at the window's own pace.
 *
 * The source ticks 60 times a second; the window looks at the session 30 times a second for what
 * moves, and 5 times a second for what is read. Hidden or minimised it draws nothing.
 */
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    /** Both must outlive the window. The layout is read from the settings and stored there. */
    MainWindow(Session& session, QSettings& settings);
    ~MainWindow() override;

    /** Opens a window for a lap. It closes with this one. */
    LapWindow* openLap(const LapStore::LapPointer& lap);

    /** Writes a lap's files into a folder; the messages tell what came of it. */
    void saveLap(const LapStore::LapPointer& lap, const QString& folder);

    /** Draws everything as it is now. */
    void refresh();

    [[nodiscard]] const LapListModel& laps() const { return m_laps; }
    [[nodiscard]] QString noticeText() const { return m_notice->text(); }

signals:
    /** A lap is saved, or is not: a sentence for people. */
    void saveEnded(const QString& sentence);

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
    void restoreLayout();
    void storeLayout();

    void drawMoving();
    void drawReadable();
    void showTicks();
    void showState();
    void showMessage(const QString& text);
    void showOutcome(const QString& sentence);
    void addLap(const LapStore::LapPointer& lap);
    void fitLapColumns();
    [[nodiscard]] QString notice() const;
    [[nodiscard]] LapStore::LapPointer currentLap() const;
    [[nodiscard]] laps::LapExporter& exporterFor(const QString& folder);
    void openCurrentLap();
    /** The dialog belongs to the window that asks: one of another would lift that over it. */
    void askAndSaveLap(const LapStore::LapPointer& lap, QWidget& asking);
    void askForPlugin();
    void showKeys();

    Session& m_session;
    QSettings& m_settings;
    CarTableModel m_cars;
    LapListModel m_laps;
    QSortFilterProxyModel m_sortedCars;
    QSortFilterProxyModel m_sortedLaps;
    std::map<QString, std::unique_ptr<laps::LapExporter>> m_exporters;  // by folder

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
