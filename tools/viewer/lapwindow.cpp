#include "tools/viewer/lapwindow.h"

#include "sdk/utilities.h"
#include "tools/viewer/lapvalues.h"

#include <QAction>
#include <QActionGroup>
#include <QHeaderView>
#include <QKeySequence>
#include <QScrollArea>
#include <QSplitter>
#include <QTableView>
#include <QToolBar>

#include <algorithm>
#include <cmath>

namespace rataip::viewer {

using lapimage::Role;
using laps::Axis;
using laps::AxisValues;

namespace {

// The lines of a panel: what is drawn later lies above.
constexpr qsizetype otherLine = 0;
constexpr qsizetype thisLine = 1;

constexpr QSize usualSize(1100, 760);
constexpr int channelPaneWidth = 330;
constexpr int plotPaneWidth = 770;

struct Range {
    double low = 0.0;
    double high = 0.0;
};

void widen(Range& range, const AxisValues& axis) {
    for (const double value : axis.values) {
        if (TLM::SDK::isValidValue(value) && std::isfinite(value)) {
            range.low = std::min(range.low, value);
            range.high = std::max(range.high, value);
        }
    }
}

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
    auto* const splitter = new QSplitter;
    splitter->addWidget(makeChannelPane());
    splitter->addWidget(m_tabs);
    splitter->setStretchFactor(1, 1);
    splitter->setSizes({channelPaneWidth, plotPaneWidth});
    setCentralWidget(splitter);
    resize(usualSize);

    connect(m_channels, &ChannelList::chosenChanged, this, &LapWindow::rebuildPanels);
    connect(&m_laps, &LapListModel::rowsInserted, this, &LapWindow::listOtherLaps);
    connect(&m_laps, &LapListModel::rowsRemoved, this, &LapWindow::listOtherLaps);
    listOtherLaps();
    chooseUsualChannels();
    describeLines();
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
    QAction* const close =
        addCommand(QStringLiteral("Close &window"), QKeySequence(QKeySequence::Close));
    connect(close, &QAction::triggered, this, &QWidget::close);

    auto* const bar = new QToolBar(QStringLiteral("Lap"));
    bar->setMovable(false);
    bar->toggleViewAction()->setShortcut(QStringLiteral("Ctrl+Shift+T"));
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
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->resizeColumnsToContents();
    table->horizontalHeader()->setStretchLastSection(true);
    return table;
}

void LapWindow::chooseUsualChannels() {
    for (const char* name : {"speed", "throttle", "brake", "gear"}) {
        m_channels->choose({QString::fromLatin1(name), false}, true);
    }
}

void LapWindow::listOtherLaps() {
    m_others->clear();
    m_others->addItem(QStringLiteral("no other lap"), QVariant::fromValue(LapPointer()));
    for (const LapPointer& lap : m_laps.laps()) {
        if (lap != m_lap) {
            m_others->addItem(lapTitle(*lap), QVariant::fromValue(lap));
            if (lap == m_other) {
                m_others->setCurrentIndex(m_others->count() - 1);
            }
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
    listOtherLaps();
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
        auto* const panel = new PlotPanel(name.name, {{lapTitle(*m_lap), Role::OtherLap, true},
                                                      {lapTitle(*m_lap), Role::ThisLap, false}});
        m_panelLayout->addWidget(panel);
        m_panels.append(panel);
    }
    drawPanels();
}

void LapWindow::drawPanels() {
    const AxisValues axis = laps::axisOf(*m_lap, m_axis);
    const AxisValues otherAxis = m_other ? laps::axisOf(*m_other, m_axis) : AxisValues();
    Range range;
    widen(range, axis);
    widen(range, otherAxis);
    for (qsizetype i = 0; i < m_panels.size(); ++i) {
        PlotPanel& panel = *m_panels.at(i);
        const ChannelName& name = m_channels->chosen().at(i);
        const auto channel = channelOf(*m_lap, name);
        const auto otherChannel = m_other ? channelOf(*m_other, name) : nullptr;
        panel.setQuantity(name.name, channel->unit());
        panel.setPoints(thisLine, laps::curveOf(*channel, axis));
        panel.setPoints(otherLine,
                        otherChannel ? laps::curveOf(*otherChannel, otherAxis) : QList<QPointF>());
        const bool isLowest = i + 1 == m_panels.size();
        panel.setAxis(isLowest ? axis.name : QString(), isLowest ? axis.unit : QString());
        panel.setAxisRange(range.low, range.high);
        panel.fitHeight();
    }
}

}  // namespace rataip::viewer
