#include "tools/viewer/livetraces.h"

#include "tools/laps/curve.h"

#include <QEvent>
#include <QScrollArea>
#include <QScrollBar>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace rataip::viewer {

using lapimage::Role;

namespace {

// Indices into `liveTraces`.
constexpr std::size_t kSpeed = 0;
constexpr std::size_t kThrottle = 1;
constexpr std::size_t kBrake = 2;
constexpr std::size_t kGear = 3;
constexpr std::size_t kSteering = 4;

struct Lane {
    const char* title;
    QList<std::size_t> traces;
    int stretch;
};

const QList<Lane>& lanes() {
    static const QList<Lane> kAll = {{"Speed", {kSpeed}, 5},
                                     {"Pedals", {kThrottle, kBrake}, 4},
                                     {"Gear", {kGear}, 3},
                                     {"Steering", {kSteering}, 4}};
    return kAll;
}

Role roleOf(std::size_t trace) {
    return trace == kThrottle ? Role::Throttle : trace == kBrake ? Role::Brake : Role::ThisLap;
}

}  // namespace

LiveTraces::LiveTraces(QWidget* parent) : QWidget(parent), m_legend(new QLabel) {
    setAccessibleName(QStringLiteral("Live traces of the own car"));
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    m_legend->setTextFormat(Qt::RichText);
    m_legend->setWordWrap(true);
    m_legend->setContentsMargins(fontMetrics().averageCharWidth(), 0, 0,
                                 fontMetrics().height() / 3);
    layout->addWidget(m_legend);
    describeLines();
    auto* const panels = new QWidget;
    auto* const panelLayout = new QVBoxLayout(panels);
    panelLayout->setContentsMargins(0, 0, 0, 0);
    panelLayout->setSpacing(0);
    for (const Lane& lane : lanes()) {
        QList<PlotPanel::Line> lines;
        // The previous lap first, so that the current one is drawn on top.
        for (const bool isPrevious : {true, false}) {
            for (const std::size_t trace : lane.traces) {
                const QString name = QString::fromLatin1(kLiveTraces[trace].label);
                // Where two quantities share a panel, the colour tells the quantity, not the lap.
                const Role role =
                    isPrevious && lane.traces.size() == 1 ? Role::OtherLap : roleOf(trace);
                lines.append({isPrevious ? name + QStringLiteral(", previous flying lap") : name,
                              role, isPrevious});
            }
        }
        auto* const panel = new PlotPanel(QString::fromLatin1(lane.title), lines);
        panel->setAxisRange(0.0, 100.0);
        qsizetype line = 0;
        for (const bool isPrevious : {true, false}) {
            for (const std::size_t trace : lane.traces) {
                m_places.append({panel, line++, trace, isPrevious});
            }
        }
        m_panels.append(panel);
        panelLayout->addWidget(panel, lane.stretch);
    }
    m_panels.constLast()->setAxis(QStringLiteral("Lap distance"), QStringLiteral("%"));
    auto* const scroll = new QScrollArea;
    scroll->setWidget(panels);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setAccessibleName(QStringLiteral("Live traces"));
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setMinimumWidth(m_panels.constLast()->minimumWidth() +
                            scroll->verticalScrollBar()->sizeHint().width());
    layout->addWidget(scroll, 1);
}

void LiveTraces::describeLines() {
    const bool isDark = lapimage::isDark(palette().color(QPalette::Window));
    const auto sample = [isDark](Role role, const char* strokes) {
        return QStringLiteral("<span style=\"color:%1\"><b>%2</b></span> ")
            .arg(lapimage::colour(role, isDark).name(), QString::fromUtf8(strokes));
    };
    const QString gap = QStringLiteral("&nbsp;&nbsp;&nbsp; ");
    m_legend->setText(sample(Role::ThisLap, "━━") + QStringLiteral("this lap") + gap +
                      sample(Role::OtherLap, "╍╍") + QStringLiteral("previous flying lap") + gap +
                      QStringLiteral("Pedals: ") + sample(Role::Throttle, "━━") +
                      QStringLiteral("throttle") + gap + sample(Role::Brake, "━━") +
                      QStringLiteral("brake (previous lap dashed)"));
}

void LiveTraces::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) {
        describeLines();
    }
}

bool LiveTraces::hasMoved(const Place& place, const QList<QPointF>& curve) const {
    const bool isAnother = curve.isEmpty() || curve.size() < place.pointsDrawn;
    if (isAnother || place.pointsDrawn == 0) {
        return curve.size() != place.pointsDrawn;
    }
    const QPointF way =
        place.panel->placeOf(curve.constLast()) - place.panel->placeOf(place.newestDrawn);
    return std::max(std::abs(way.x()), std::abs(way.y())) * devicePixelRatioF() >= 1.0;
}

bool LiveTraces::hasMoved(const PlotPanel* panel, const TraceCurves& curves) const {
    return std::any_of(m_places.cbegin(), m_places.cend(), [&](const Place& place) {
        return place.panel == panel && !place.isPrevious && hasMoved(place, curves[place.trace]);
    });
}

void LiveTraces::draw(Place& place, const LiveLap& lap, qsizetype columns) {
    const QList<QPointF>& curve = (place.isPrevious ? lap.previous() : lap.current())[place.trace];
    place.panel->setPoints(place.line, laps::thinned(curve, columns));
    place.panel->setQuantity(place.panel->accessibleName(), lap.unit(place.trace));
    place.pointsDrawn = curve.size();
    place.newestDrawn = curve.isEmpty() ? QPointF() : curve.constLast();
}

void LiveTraces::show(const LiveLap& lap) {
    const bool isPreviousNew = lap.previousRevision() != m_previousShown || width() != m_widthShown;
    m_previousShown = lap.previousRevision();
    m_widthShown = width();
    // A line of this width shows no more than one point for every two pixels.
    const qsizetype columns = m_widthShown / 4;
    for (PlotPanel* panel : m_panels) {
        if (!isPreviousNew && !hasMoved(panel, lap.current())) {
            continue;
        }
        for (Place& place : m_places) {
            if (place.panel == panel && (isPreviousNew || !place.isPrevious)) {
                draw(place, lap, columns);
            }
        }
        panel->growHeight();
    }
}

}  // namespace rataip::viewer
