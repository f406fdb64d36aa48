#include "tools/viewer/lapwindow.h"

#include "tools/viewer/lapvalues.h"

#include <QAction>
#include <QActionGroup>
#include <QCloseEvent>
#include <QEvent>
#include <QHeaderView>
#include <QScrollArea>
#include <QScrollBar>
#include <QSet>
#include <QTableView>
#include <QToolBar>

#include <algorithm>

namespace rataip::viewer {

using lapimage::Role;
using laps::Axis;
using laps::AxisValues;

namespace {

// The lines of a panel. The last is drawn on top.
constexpr qsizetype kOtherLine = 0;
constexpr qsizetype kThisLine = 1;

constexpr QSize kDefaultSize(1100, 760);
// The first choice of a lap to compare with: "no other lap".
constexpr int kNoOtherLap = 0;

QString lineSample(const QColor& colour, const QString& strokes) {
    return QStringLiteral("<span style=\"color:%1\"><b>%2</b></span> ").arg(colour.name(), strokes);
}

}  // namespace

LapWindow::LapWindow(const LapPointer& lap, const LapListModel& laps, QWidget* parent)
    : QMainWindow(parent),
      m_lap(lap),
      m_laps(laps),
      m_channels(new ChannelList(*lap, this)),
      m_found(new QSortFilterProxyModel(this)) {
    setWindowTitle(lapTitle(*lap));
    makeCommands();

    m_tabs = new QTabWidget;
    m_tabs->setAccessibleName(QStringLiteral("Plots and values"));
    m_tabs->addTab(makePlotPane(), QStringLiteral("Plots"));
    m_tabs->addTab(makeValuesPane(), QStringLiteral("Header and values"));
    m_splitter = new QSplitter;
    QWidget* const channelPane = makeChannelPane();
    m_splitter->addWidget(channelPane);
    m_splitter->addWidget(m_tabs);
    m_splitter->setStretchFactor(1, 1);
    const int channelWidth = channelPane->sizeHint().width();
    m_splitter->setSizes({channelWidth, kDefaultSize.width() - channelWidth});
    m_outcome = new OutcomeLine;
    auto* const centre = new QWidget;
    auto* const layout = new QVBoxLayout(centre);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_splitter, 1);
    layout->addWidget(m_outcome);
    setCentralWidget(centre);
    resize(kDefaultSize);

    connect(m_channels, &ChannelList::chosenChanged, this, &LapWindow::rebuildPanels);
    connect(&m_laps, &LapListModel::rowsInserted, this,
            [this](const QModelIndex&, int first, int last) { offerLaps(first, last); });
    connect(&m_laps, &LapListModel::rowsRemoved, this, &LapWindow::withdrawReleasedLaps);
    m_others->addItem(QStringLiteral("no other lap"), QVariant::fromValue(LapPointer()));
    offerLaps(0, m_laps.rowCount() - 1);
    chooseDefaultChannels();
    describeLines();
}

QList<KeyText> LapWindow::keys() {
    return {{QStringLiteral("Ctrl+D"), QStringLiteral("Over distance")},
            {QStringLiteral("Ctrl+T"), QStringLiteral("Over time")},
            {QKeySequence(QKeySequence::Find), QStringLiteral("Search channels")},
            {QStringLiteral("Ctrl+M"), QStringLiteral("Compare")},
            {QStringLiteral("Ctrl+Tab"), QStringLiteral("Switch between plots and values")},
            {QStringLiteral("Ctrl+E"), QStringLiteral("Save files...")},
            {QStringLiteral("Ctrl+W"), QStringLiteral("Close window")},
            {QStringLiteral("Ctrl+Shift+T"), QStringLiteral("Lap")}};
}

QAction* LapWindow::addCommand(const QString& text, const QKeySequence& shortcut) {
    auto* const action = new QAction(text, this);
    action->setShortcut(shortcut);
    action->setToolTip(QStringLiteral("%1 (%2)").arg(QString(text).remove(QLatin1Char('&')),
                                                     shortcut.toString(QKeySequence::NativeText)));
    addAction(action);
    return action;
}

void LapWindow::makeCommands() {
    m_overDistance = addCommand(QStringLiteral("Over &distance"), QStringLiteral("Ctrl+D"));
    m_overTime = addCommand(QStringLiteral("Over &time"), QStringLiteral("Ctrl+T"));
    auto* const axes = new QActionGroup(this);
    for (QAction* action : {m_overDistance, m_overTime}) {
        action->setCheckable(true);
        axes->addAction(action);
    }
    m_overDistance->setChecked(true);
    connect(m_overDistance, &QAction::triggered, this, [this] { setAxis(Axis::Distance); });
    connect(m_overTime, &QAction::triggered, this, [this] { setAxis(Axis::Time); });

    QAction* const search =
        addCommand(QStringLiteral("&Search channels"), QKeySequence(QKeySequence::Find));
    connect(search, &QAction::triggered, this, [this] { m_search->setFocus(); });
    QAction* const compare = addCommand(QStringLiteral("&Compare"), QStringLiteral("Ctrl+M"));
    connect(compare, &QAction::triggered, this, [this] { m_others->setFocus(); });
    QAction* const flip =
        addCommand(QStringLiteral("Switch between plots and &values"), QStringLiteral("Ctrl+Tab"));
    connect(flip, &QAction::triggered, this,
            [this] { m_tabs->setCurrentIndex((m_tabs->currentIndex() + 1) % m_tabs->count()); });
    QAction* const save = addCommand(QStringLiteral("Save &files..."), QStringLiteral("Ctrl+E"));
    connect(save, &QAction::triggered, this, [this] { emit saveRequested(m_lap); });
    QAction* const close = addCommand(QStringLiteral("Close &window"), QStringLiteral("Ctrl+W"));
    connect(close, &QAction::triggered, this, &QWidget::close);

    auto* const bar = new QToolBar(QStringLiteral("Lap"));
    bar->setMovable(false);
    // A shortcut works only for an action that belongs to a widget.
    bar->toggleViewAction()->setShortcut(QStringLiteral("Ctrl+Shift+T"));
    addAction(bar->toggleViewAction());
    bar->addActions({m_overDistance, m_overTime});
    bar->addSeparator();
    auto* const label = new QLabel(QStringLiteral("Compare with: "));
    m_others = new QComboBox;
    m_others->setAccessibleName(QStringLiteral("Lap to compare with"));
    m_others->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    label->setBuddy(m_others);
    bar->addWidget(label);
    bar->addWidget(m_others);
    bar->addSeparator();
    bar->addAction(save);
    addToolBar(bar);
    connect(m_others, &QComboBox::activated, this,
            [this](int index) { compareWith(m_others->itemData(index).value<LapPointer>()); });
}

QWidget* LapWindow::makeChannelPane() {
    m_found->setSourceModel(m_channels);
    m_found->setRecursiveFilteringEnabled(true);
    m_found->setFilterCaseSensitivity(Qt::CaseInsensitive);

    m_search = new QLineEdit;
    m_search->setPlaceholderText(QStringLiteral("Search channels"));
    m_search->setAccessibleName(QStringLiteral("Search channels"));
    connect(m_search, &QLineEdit::textChanged, this, [this](const QString& text) {
        m_found->setFilterFixedString(text);
        m_tree->expandAll();
    });

    m_tree = new QTreeView;
    m_tree->setAccessibleName(QStringLiteral("Channels"));
    m_tree->setModel(m_found);
    m_tree->setUniformRowHeights(true);
    m_tree->expandAll();
    m_tree->resizeColumnToContents(0);
    m_tree->resizeColumnToContents(1);
    // Wide enough for the simulator's names. Longer ones scroll.
    const int columns = m_tree->columnWidth(0) + m_tree->columnWidth(1);
    m_tree->setMinimumWidth(std::min(columns, kDefaultSize.width() / 3) + 2 * m_tree->frameWidth() +
                            m_tree->verticalScrollBar()->sizeHint().width());

    auto* const pane = new QWidget;
    auto* const layout = new QVBoxLayout(pane);
    layout->addWidget(m_search);
    layout->addWidget(m_tree);
    return pane;
}

QWidget* LapWindow::makePlotPane() {
    m_legend = new QLabel;
    m_legend->setTextFormat(Qt::RichText);
    m_legend->setWordWrap(true);
    auto* const panels = new QWidget;
    m_panelLayout = new QVBoxLayout(panels);
    m_panelLayout->setContentsMargins(0, 0, 0, 0);
    m_panelLayout->setSpacing(0);
    auto* const scroll = new QScrollArea;
    scroll->setWidget(panels);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setAccessibleName(QStringLiteral("Plots"));

    auto* const pane = new QWidget;
    auto* const layout = new QVBoxLayout(pane);
    layout->addWidget(m_legend);
    layout->addWidget(scroll, 1);
    return pane;
}

QWidget* LapWindow::makeValuesPane() {
    auto* const table = new QTableView;
    table->setAccessibleName(QStringLiteral("Header and values of the lap"));
    QStandardItemModel* const values = lapValues(*m_lap).release();
    values->setParent(table);
    table->setModel(values);
    table->verticalHeader()->hide();
    table->verticalHeader()->setDefaultSectionSize(fontMetrics().height() * 3 / 2);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->resizeColumnsToContents();
    table->horizontalHeader()->setStretchLastSection(true);
    return table;
}

void LapWindow::chooseDefaultChannels() {
    QList<ChannelName> names;
    for (const char* name : {"speed", "throttle", "brake", "gear"}) {
        names.append({QString::fromLatin1(name), false});
    }
    m_channels->chooseOnly(names);
}

bool LapWindow::hasChannel(const ChannelName& name) const {
    return name.isCalculated ? m_lap->containsCalculatedChannel(name.name)
                             : m_lap->containsRecordedChannel(name.name);
}

/** Includes the channels chosen before that this lap lacks, so that they are not forgotten. */
QList<ChannelName> LapWindow::channelsToHandOn() const {
    QList<ChannelName> names = m_channels->chosen();
    for (const ChannelName& name : m_handedOn) {
        if (!hasChannel(name)) {
            names.append(name);
        }
    }
    return names;
}

void LapWindow::rememberLayoutIn(Settings& settings) {
    m_settings = &settings;
    const LapLayout layout = settings.lapLayout();
    if (layout.size.isValid()) {
        resize(layout.size);
    }
    m_splitter->restoreState(layout.splitter);
    setAxis(layout.axis);
    if (layout.channels) {
        m_handedOn = *layout.channels;
        m_channels->chooseOnly(m_handedOn);
    }
}

void LapWindow::closeEvent(QCloseEvent* event) {
    if (m_settings != nullptr) {
        m_settings->storeLapLayout({size(), m_splitter->saveState(), m_axis, channelsToHandOn()});
    }
    QMainWindow::closeEvent(event);
}

void LapWindow::changeEvent(QEvent* event) {
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) {
        describeLines();
    }
}

void LapWindow::showOutcome(const QString& sentence) {
    m_outcome->say(sentence);
}

bool LapWindow::isOfSameCar(const LapPointer& other) const {
    return other->carId() == m_lap->carId() && other->driverName() == m_lap->driverName();
}

/** Laps of the same car come before all others, the newest first. */
void LapWindow::offerLap(const LapPointer& other) {
    if (other == m_lap) {
        return;
    }
    int place = kNoOtherLap + 1;
    if (!isOfSameCar(other)) {
        while (place < m_others->count() &&
               isOfSameCar(m_others->itemData(place).value<LapPointer>())) {
            ++place;
        }
    }
    m_others->insertItem(place, lapTitle(*other), QVariant::fromValue(other));
}

void LapWindow::offerLaps(int first, int last) {
    for (int row = first; row <= last; ++row) {
        offerLap(m_laps.lap(row));
    }
}

/** The index of a lap in the list of laps to compare with, or -1. */
int LapWindow::placeOf(const LapPointer& other) const {
    for (int place = 0; place < m_others->count(); ++place) {
        if (m_others->itemData(place).value<LapPointer>() == other) {
            return place;
        }
    }
    return -1;
}

/** Keeps the lap that is being compared with: this window still holds it. */
void LapWindow::withdrawReleasedLaps() {
    const QSet<LapPointer> kept(m_laps.laps().cbegin(), m_laps.laps().cend());
    for (int place = m_others->count() - 1; place > kNoOtherLap; --place) {
        const auto lap = m_others->itemData(place).value<LapPointer>();
        if (lap != m_other && !kept.contains(lap)) {
            m_others->removeItem(place);
        }
    }
}

void LapWindow::setAxis(Axis axis) {
    m_axis = axis;
    (axis == Axis::Distance ? m_overDistance : m_overTime)->setChecked(true);
    drawPanels();
}

void LapWindow::compareWith(const LapPointer& other) {
    m_other = other;
    if (placeOf(other) < 0) {
        offerLap(other);
    }
    m_others->setCurrentIndex(placeOf(other));
    describeLines();
    drawPanels();
}

void LapWindow::describeLines() {
    const bool isDark = lapimage::isDark(palette().color(QPalette::Window));
    QString text = lineSample(lapimage::colour(Role::ThisLap, isDark), QStringLiteral("━━")) +
                   lapTitle(*m_lap).toHtmlEscaped();
    if (m_other) {
        text += QStringLiteral("&nbsp;&nbsp;&nbsp; ") +
                lineSample(lapimage::colour(Role::OtherLap, isDark), QStringLiteral("╍╍")) +
                lapTitle(*m_other).toHtmlEscaped();
    }
    m_legend->setText(text);
}

void LapWindow::rebuildPanels() {
    qDeleteAll(m_panels);
    m_panels.clear();
    for (const ChannelName& name : m_channels->chosen()) {
        auto* const panel =
            new PlotPanel(name.name, {{QStringLiteral("other lap"), Role::OtherLap, true},
                                      {lapTitle(*m_lap), Role::ThisLap, false}});
        m_panelLayout->addWidget(panel, 1);
        m_panels.append(panel);
    }
    drawPanels();
}

void LapWindow::drawPanels() {
    const AxisValues axis = laps::axisOf(*m_lap, m_axis);
    const AxisValues otherAxis = m_other ? laps::axisOf(*m_other, m_axis) : AxisValues();
    laps::Range range;
    laps::widen(range, axis);
    laps::widen(range, otherAxis);
    for (qsizetype i = 0; i < m_panels.size(); ++i) {
        PlotPanel& panel = *m_panels.at(i);
        const ChannelName& name = m_channels->chosen().at(i);
        const auto channel = channelOf(*m_lap, name);
        const auto otherChannel = m_other ? channelOf(*m_other, name) : nullptr;
        panel.setQuantity(name.name, channel->unit());
        panel.setPoints(kThisLine, laps::curveOf(*channel, axis));
        panel.setPoints(kOtherLine,
                        otherChannel ? laps::curveOf(*otherChannel, otherAxis) : QList<QPointF>());
        const bool isLowest = i + 1 == m_panels.size();
        panel.setAxis(isLowest ? axis.name : QString(), isLowest ? axis.unit : QString());
        panel.setAxisRange(range.low, range.high);
        panel.fitHeight();
    }
}

}  // namespace rataip::viewer
