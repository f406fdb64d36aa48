#include "tools/viewer/mainwindow.h"

#include "tools/host/tickmeter.h"

#include <QCloseEvent>
#include <QEvent>
#include <QFileDialog>
#include <QHeaderView>
#include <QKeySequence>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QScreen>
#include <QScrollBar>
#include <QTime>
#include <QToolBar>
#include <QVBoxLayout>

#include <algorithm>
#include <chrono>
#include <utility>

namespace rataip::viewer {

using LapPointer = LapStore::LapPointer;

namespace {

// Fast enough for smooth movement, and slow enough to read text.
constexpr std::chrono::milliseconds kDrawInterval{33};
constexpr std::chrono::milliseconds kReadInterval{200};
// Long enough to count ticks.
constexpr std::chrono::milliseconds kRateInterval{1000};

constexpr QSize kDefaultSize(1500, 920);
constexpr int kMaxMessages = 1000;
// A row of the car table with names of average length.
constexpr int kCarRowCharacters = 112;

QString keyLines(const QString& heading, const QList<KeyText>& keys) {
    QString lines =
        QStringLiteral("<tr><th colspan=\"2\" align=\"left\">%1</th></tr>").arg(heading);
    for (const KeyText& key : keys) {
        lines += QStringLiteral("<tr><td>%1&nbsp;&nbsp;</td><td>%2</td></tr>")
                     .arg(key.shortcut.toString(QKeySequence::NativeText).toHtmlEscaped(),
                          key.text.toHtmlEscaped());
    }
    return lines;
}

/** Makes room for the widest text that the column will ever hold. */
void reserveColumn(QTableView& table, int column, const QString& widest) {
    const int padding = 3 * table.fontMetrics().averageCharWidth();
    const int width = table.fontMetrics().horizontalAdvance(widest) + padding;
    if (table.columnWidth(column) < width) {
        table.setColumnWidth(column, width);
    }
}

/** Never narrows the column, because the user may have chosen its width. */
void widenToContents(QTableView& table, int column) {
    const int before = table.columnWidth(column);
    table.resizeColumnToContents(column);
    if (table.columnWidth(column) < before) {
        table.setColumnWidth(column, before);
    }
}

}  // namespace

MainWindow::MainWindow(Session& session, QSettings& settings)
    : m_session(session), m_settings(settings) {
    setWindowTitle(QStringLiteral("rataip viewer"));
    m_cars.setPalette(palette());
    m_sortedCars.setSourceModel(&m_cars);
    m_sortedCars.setSortRole(CarTableModel::kSortRole);
    m_sortedLaps.setSourceModel(&m_laps);
    m_sortedLaps.setSortRole(LapListModel::kSortRole);

    makeCommands();
    makePanes();
    makeToolBar();
    resize(kDefaultSize.boundedTo(screen()->availableSize()));
    m_isArranged = m_settings.restoreWindow(*this, {m_carTable, m_lapTable});

    connect(&m_session, &Session::stateChanged, this, &MainWindow::showState);
    connect(&m_session, &Session::message, this, &MainWindow::showMessage);
    connect(&m_saving, &LapSaving::ended, this, &MainWindow::showOutcome);
    connect(&m_session, &Session::lapArrived, this, &MainWindow::addLap);
    connect(&m_session, &Session::probed, this, [this](bool isThere) {
        showMessage(isThere ? QStringLiteral("A simulator is there and delivers data.")
                            : QStringLiteral("No simulator that delivers data was found."));
    });
    m_drawTimer.setTimerType(Qt::PreciseTimer);
    connect(&m_drawTimer, &QTimer::timeout, this, &MainWindow::drawMoving);
    connect(&m_readTimer, &QTimer::timeout, this, &MainWindow::drawReadable);
    m_drawTimer.start(kDrawInterval);
    m_readTimer.start(kReadInterval);
    showState();
}

QAction* MainWindow::addCommand(const QString& text, const QKeySequence& shortcut,
                                const QString& tip) {
    auto* const action = new QAction(text, this);
    action->setShortcut(shortcut);
    action->setStatusTip(tip);
    action->setToolTip(
        QStringLiteral("%1 (%2)").arg(tip, shortcut.toString(QKeySequence::NativeText)));
    addAction(action);
    return action;
}

void MainWindow::makeCommands() {
    m_probe = addCommand(QStringLiteral("&Probe"), QStringLiteral("F5"),
                         QStringLiteral("Look whether a simulator is there"));
    m_connect = addCommand(QStringLiteral("&Connect"), QStringLiteral("F6"),
                           QStringLiteral("Connect to the simulator, now or when it comes"));
    m_disconnect = addCommand(QStringLiteral("&Disconnect"), QStringLiteral("F7"),
                              QStringLiteral("Disconnect from the simulator"));
    m_openPlugin = addCommand(QStringLiteral("&Open plugin..."), QKeySequence(QKeySequence::Open),
                              QStringLiteral("Choose the plugin's file"));
    QAction* const openLap =
        addCommand(QStringLiteral("Open &lap"), QStringLiteral("Ctrl+L"),
                   QStringLiteral("Open the selected lap in a window of its own"));
    QAction* const saveLapFiles =
        addCommand(QStringLiteral("Save lap &files..."), QStringLiteral("Ctrl+E"),
                   QStringLiteral("Save the selected lap as CSV, JSON and PNG"));
    QAction* const quit = addCommand(QStringLiteral("&Quit"), QStringLiteral("Ctrl+Q"),
                                     QStringLiteral("Close all windows"));
    QAction* const keys = addCommand(QStringLiteral("&Keys"), QStringLiteral("F1"),
                                     QStringLiteral("Show what every key does"));

    connect(m_probe, &QAction::triggered, &m_session, &Session::probe);
    connect(m_connect, &QAction::triggered, &m_session, &Session::connectToSource);
    connect(m_disconnect, &QAction::triggered, &m_session, &Session::disconnectFromSource);
    connect(m_openPlugin, &QAction::triggered, this, &MainWindow::askForPlugin);
    connect(openLap, &QAction::triggered, this, &MainWindow::openSelectedLap);
    connect(saveLapFiles, &QAction::triggered, this, &MainWindow::saveSelectedLap);
    connect(quit, &QAction::triggered, this, &QWidget::close);
    connect(keys, &QAction::triggered, this, &MainWindow::showKeys);

    menuBar()->setAccessibleName(QStringLiteral("Menus"));
    QMenu* const source = menuBar()->addMenu(QStringLiteral("&Source"));
    source->addActions({m_probe, m_connect, m_disconnect, m_openPlugin, quit});
    QMenu* const lap = menuBar()->addMenu(QStringLiteral("&Laps"));
    lap->addActions({openLap, saveLapFiles});
    QMenu* const view = menuBar()->addMenu(QStringLiteral("&View"));
    view->setObjectName(QStringLiteral("view"));
    QMenu* const help = menuBar()->addMenu(QStringLiteral("&Help"));
    help->addAction(keys);
}

void MainWindow::makeToolBar() {
    auto* const bar = new QToolBar(QStringLiteral("Source"));
    bar->setObjectName(QStringLiteral("source"));
    bar->setMovable(false);
    bar->toggleViewAction()->setShortcut(QStringLiteral("Ctrl+5"));
    bar->addActions({m_probe, m_connect, m_disconnect});
    bar->addSeparator();
    m_lamp = new Lamp;
    m_ticks = new QLabel;
    m_ticks->setAccessibleName(QStringLiteral("Ticks"));
    m_ticks->setContentsMargins(fontMetrics().averageCharWidth(), 0, 0, 0);
    bar->addWidget(m_lamp);
    bar->addWidget(m_ticks);
    addToolBar(bar);

    QMenu* const view = menuBar()->findChild<QMenu*>(QStringLiteral("view"));
    view->addAction(bar->toggleViewAction());
    QAction* const reset = addCommand(QStringLiteral("&Reset layout"), QStringLiteral("Ctrl+R"),
                                      QStringLiteral("Put every pane where it was at first"));
    connect(reset, &QAction::triggered, this, &MainWindow::arrangePanes);
    view->addSeparator();
    view->addAction(reset);
}

QDockWidget* MainWindow::addPane(const QString& title, const QKeySequence& shortcut,
                                 QWidget* content, Qt::DockWidgetArea area) {
    auto* const pane = new QDockWidget(title);
    pane->setObjectName(title);
    pane->setAccessibleName(title);
    pane->setWidget(content);
    pane->toggleViewAction()->setShortcut(shortcut);
    addDockWidget(area, pane);
    menuBar()->findChild<QMenu*>(QStringLiteral("view"))->addAction(pane->toggleViewAction());
    return pane;
}

QTableView* MainWindow::makeTable(const QString& name, QSortFilterProxyModel& sorted) {
    auto* const table = new QTableView;
    table->setObjectName(name);
    table->setAccessibleName(name);
    table->setModel(&sorted);
    table->setSortingEnabled(true);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setSelectionMode(QAbstractItemView::SingleSelection);
    table->setTabKeyNavigation(false);
    table->setWordWrap(false);
    table->verticalHeader()->hide();
    table->verticalHeader()->setDefaultSectionSize(fontMetrics().height() * 3 / 2);
    table->horizontalHeader()->setHighlightSections(false);
    table->resizeColumnsToContents();
    return table;
}

void MainWindow::makePanes() {
    m_notice = new QLabel;
    m_notice->setWordWrap(true);
    m_notice->setMargin(fontMetrics().height() / 2);
    m_notice->setAccessibleName(QStringLiteral("Notice"));
    m_notice->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    m_traces = new LiveTraces;
    auto* const centre = new QWidget;
    auto* const layout = new QVBoxLayout(centre);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_notice);
    layout->addWidget(m_traces, 1);
    m_outcome = new OutcomeLine;
    layout->addWidget(m_outcome);
    setCentralWidget(centre);

    m_strip = new TrackStrip;
    m_carTable = makeTable(QStringLiteral("Cars"), m_sortedCars);
    m_carTable->sortByColumn(CarTableModel::Position, Qt::AscendingOrder);
    reserveColumn(*m_carTable, CarTableModel::Status, QStringLiteral("Waiting for start"));
    reserveColumn(*m_carTable, CarTableModel::LastLap, QStringLiteral("59:59.999"));
    m_lapTable = makeTable(QStringLiteral("Laps"), m_sortedLaps);
    // Unsorted, which is the order in which the laps arrived.
    m_sortedLaps.sort(-1);
    m_lapTable->horizontalHeader()->setSortIndicator(-1, Qt::AscendingOrder);
    m_messages = new QPlainTextEdit;
    m_messages->setReadOnly(true);
    m_messages->setTabChangesFocus(true);
    m_messages->setMaximumBlockCount(kMaxMessages);
    m_messages->setAccessibleName(QStringLiteral("Messages"));

    m_stripPane =
        addPane(QStringLiteral("Track"), QStringLiteral("Ctrl+1"), m_strip, Qt::TopDockWidgetArea);
    m_carPane = addPane(QStringLiteral("Cars"), QStringLiteral("Ctrl+2"), m_carTable,
                        Qt::RightDockWidgetArea);
    m_lapPane = addPane(QStringLiteral("Laps"), QStringLiteral("Ctrl+3"), m_lapTable,
                        Qt::RightDockWidgetArea);
    m_messagePane = addPane(QStringLiteral("Messages"), QStringLiteral("Ctrl+4"), m_messages,
                            Qt::BottomDockWidgetArea);

    connect(m_lapTable, &QTableView::activated, this, &MainWindow::openSelectedLap);
    connect(&m_laps, &LapListModel::rowsInserted, this, &MainWindow::fitLapColumns);
    connect(&m_cars, &CarTableModel::modelReset, this, [this] {
        for (int column = 0; column < CarTableModel::ColumnCount; ++column) {
            widenToContents(*m_carTable, column);
        }
    });
}

void MainWindow::arrangePanes() {
    for (const auto& [pane, area] : {std::pair(m_stripPane, Qt::TopDockWidgetArea),
                                     std::pair(m_carPane, Qt::RightDockWidgetArea),
                                     std::pair(m_lapPane, Qt::RightDockWidgetArea),
                                     std::pair(m_messagePane, Qt::BottomDockWidgetArea)}) {
        pane->setFloating(false);
        addDockWidget(area, pane);
        pane->show();
    }
    // All columns of the cars where they fit into two thirds of the window.
    const int carColumns = kCarRowCharacters * fontMetrics().averageCharWidth();
    const int tables = std::max(11 * width() / 20, std::min(carColumns, 2 * width() / 3));
    resizeDocks({m_carPane, m_lapPane}, {tables, tables}, Qt::Horizontal);
    resizeDocks({m_carPane, m_lapPane}, {height() / 2, height() / 4}, Qt::Vertical);
    resizeDocks({m_stripPane, m_messagePane}, {m_strip->sizeHint().height(), height() / 9},
                Qt::Vertical);
}

// The panes divide the window's size, which is known only now.
void MainWindow::showEvent(QShowEvent* event) {
    QMainWindow::showEvent(event);
    if (!m_isArranged) {
        m_isArranged = true;
        arrangePanes();
    }
}

void MainWindow::closeEvent(QCloseEvent* event) {
    m_settings.storeWindow(*this, {m_carTable, m_lapTable});
    const QList<LapWindow*> windows = findChildren<LapWindow*>(Qt::FindDirectChildrenOnly);
    for (LapWindow* window : windows) {
        window->close();
    }
    QMainWindow::closeEvent(event);
}

void MainWindow::changeEvent(QEvent* event) {
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) {
        m_cars.setPalette(palette());
    }
}

void MainWindow::refresh() {
    m_tickDrawn = 0;
    drawMoving();
    drawReadable();
}

void MainWindow::drawMoving() {
    const quint64 tick = m_session.ticks().received();
    if (!isVisible() || isMinimized() || tick == m_tickDrawn) {
        return;
    }
    m_tickDrawn = tick;
    m_strip->setCars(m_session.field().cars());
    m_traces->show(m_session.liveLap());
}

void MainWindow::drawReadable() {
    m_cars.setCars(m_session.field().cars());
    m_lamp->setLit(m_session.isDataArriving());
    showTicks();
    const QString text = notice();
    if (m_notice->text() != text) {
        m_notice->setText(text);
    }
}

void MainWindow::showTicks() {
    const auto now = host::TickMeter::Clock::now();
    if (now - m_rateTaken >= kRateInterval) {
        m_rateTaken = now;
        m_rate = m_session.ticks().takeRate(now);
    }
    m_ticks->setText(
        QStringLiteral("%1 ticks/s, %2 lost").arg(m_rate, 0, 'f', 1).arg(m_session.ticks().lost()));
}

QString MainWindow::notice() const {
    switch (m_session.state()) {
        case Session::State::NoPlugin:
            return QStringLiteral(
                       "No plugin is loaded: %1.\nBuild the plugin, or choose its file with "
                       "\"Open plugin...\" (%2).")
                .arg(m_session.pluginError(),
                     m_openPlugin->shortcut().toString(QKeySequence::NativeText));
        case Session::State::Disconnected:
            return QStringLiteral(
                       "Not connected. \"Connect\" (%1) connects to the simulator, or "
                       "waits until there is one.")
                .arg(m_connect->shortcut().toString(QKeySequence::NativeText));
        case Session::State::Waiting:
            return QStringLiteral(
                "No simulator was found. Start the simulator and go onto the track, or start "
                "rataip-simulator in its place. This window connects by itself as soon as data "
                "arrives.");
        case Session::State::Connected:
            break;
    }
    return m_session.isDataArriving()
               ? QStringLiteral("Connected: %1").arg(m_session.pluginText())
               : QStringLiteral(
                     "Connected, but no data is arriving. If the simulator is paused or "
                     "loading, wait; if it is gone, this window will say so in a moment.");
}

void MainWindow::showState() {
    const Session::State state = m_session.state();
    m_openPlugin->setEnabled(state == Session::State::NoPlugin);
    m_probe->setEnabled(state == Session::State::Disconnected || state == Session::State::Waiting);
    m_connect->setEnabled(state == Session::State::Disconnected);
    m_disconnect->setEnabled(state == Session::State::Connected);
    m_notice->setText(notice());
    m_tickDrawn = 0;
}

void MainWindow::showMessage(const QString& text) {
    m_messages->appendPlainText(QTime::currentTime().toString(QStringLiteral("hh:mm:ss  ")) + text);
}

/** Shows the sentence in a line of its own too, since the messages may be hidden. */
void MainWindow::showOutcome(const QString& sentence) {
    showMessage(sentence);
    m_outcome->say(sentence);
}

void MainWindow::addLap(const LapPointer& lap) {
    const QScrollBar* const bar = m_lapTable->verticalScrollBar();
    const bool isAtEnd = bar->value() == bar->maximum();
    m_laps.add(lap);
    if (isAtEnd) {
        m_lapTable->scrollToBottom();
    }
    m_lapPane->setWindowTitle(
        m_laps.released() == 0
            ? QStringLiteral("Laps")
            : QStringLiteral("Laps (%1 older ones released)").arg(m_laps.released()));
}

void MainWindow::fitLapColumns() {
    const int row = m_laps.rowCount() - 1;
    for (int column = 0; column < LapListModel::ColumnCount; ++column) {
        const QModelIndex cell = m_sortedLaps.mapFromSource(m_laps.index(row, column));
        const int needed = m_lapTable->sizeHintForIndex(cell).width() + 2;
        if (needed > m_lapTable->columnWidth(column)) {
            m_lapTable->setColumnWidth(column, needed);
        }
    }
}

/** Tells the user and returns null when no lap is selected. */
LapPointer MainWindow::selectedLap() {
    const QModelIndex index = m_sortedLaps.mapToSource(m_lapTable->currentIndex());
    if (!index.isValid()) {
        showOutcome(QStringLiteral("Select a lap in the list first."));
        return {};
    }
    return m_laps.lap(index.row());
}

LapWindow* MainWindow::openLap(const LapPointer& lap) {
    auto* const window = new LapWindow(lap, m_laps, this);
    window->setWindowFlag(Qt::Window);
    window->setAttribute(Qt::WA_DeleteOnClose);
    connect(window, &LapWindow::saveRequested, this,
            [this, window](const LapPointer& asked) { m_saving.askAndSave(asked, *window); });
    connect(&m_saving, &LapSaving::ended, window, &LapWindow::showOutcome);
    window->rememberLayoutIn(m_settings);
    window->show();
    return window;
}

void MainWindow::openSelectedLap() {
    if (const LapPointer lap = selectedLap()) {
        openLap(lap);
    }
}

void MainWindow::saveSelectedLap() {
    if (const LapPointer lap = selectedLap()) {
        m_saving.askAndSave(lap, *this);
    }
}

void MainWindow::askForPlugin() {
    const QString path =
        QFileDialog::getOpenFileName(this, QStringLiteral("The plugin's library file"));
    if (!path.isEmpty() && m_session.loadPlugin(path)) {
        m_session.connectToSource();
    }
}

void MainWindow::showKeys() {
    QList<KeyText> keys;
    // Every command of the window is in one of its menus.
    const QList<QAction*> menus = menuBar()->actions();
    for (const QAction* menu : menus) {
        const QList<QAction*> commands = menu->menu()->actions();
        for (const QAction* command : commands) {
            if (!command->shortcut().isEmpty()) {
                keys.append({command->shortcut(), command->text().remove(QLatin1Char('&'))});
            }
        }
    }
    QMessageBox::information(
        this, QStringLiteral("Keys"),
        QStringLiteral("<table>%1%2</table>")
            .arg(keyLines(QStringLiteral("In the window"), keys),
                 keyLines(QStringLiteral("In the window of a lap"), LapWindow::keys())));
}

}  // namespace rataip::viewer
