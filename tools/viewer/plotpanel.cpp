#include "tools/viewer/plotpanel.h"

#include "tools/lapimage/scale.h"
#include "tools/lapimage/ticks.h"
#include "tools/laps/displayunit.h"

#include <QChart>
#include <QEvent>
#include <QFontMetricsF>
#include <QGraphicsLayout>
#include <QPen>

#include <algorithm>
#include <cmath>

namespace rataip::viewer {

namespace {

constexpr double kCurveWidth = 1.6;
constexpr int kMaxVerticalMarks = 6;
constexpr int kMinMarks = 2;
constexpr int kMaxMarks = 11;
constexpr double kGap = 6.0;
// The chart keeps this much free on either side of a mark's number, and shortens a number that does
// not fit into the rest of the distance between two marks.
constexpr double kLabelPadding = 4.0;

// The widest number beside a plot. Wider ones are written with an exponent.
QString widestNumber() {
    return QStringLiteral("-000000.0");
}

// A typical number below an axis, with a space on either side.
QString usualNumber() {
    return QStringLiteral("00000");
}

double markHeight(const QFontMetricsF& metrics) {
    return metrics.height() + 2.0 * kLabelPadding;
}

bool fit(const QList<double>& marks, char format, int digits, const QFontMetricsF& metrics,
         double room) {
    return std::all_of(marks.cbegin(), marks.cend(), [&](double mark) {
        return metrics.horizontalAdvance(QString::number(mark, format, digits)) <= room;
    });
}

/** How many digits after the first it takes to distinguish two marks. */
int distinguishingDigits(const QList<double>& marks) {
    const double largest = std::max(
        {std::abs(marks.constFirst()), std::abs(marks.constLast()), marks.at(1) - marks.at(0)});
    return static_cast<int>(std::floor(std::log10(largest)) -
                            std::floor(std::log10(marks.at(1) - marks.at(0)) + 1e-9));
}

/** In full where the numbers fit, else with an exponent and as many digits as fit. */
QString numberFormat(const QList<double>& marks, int decimals, const QFontMetricsF& metrics,
                     double room) {
    if (fit(marks, 'f', decimals, metrics, room)) {
        return QStringLiteral("%.%1f").arg(decimals);
    }
    int digits = distinguishingDigits(marks);
    while (digits > 0 && !fit(marks, 'e', digits, metrics, room)) {
        --digits;
    }
    return QStringLiteral("%.%1e").arg(digits);
}

/** Sets marks from `first` on. The axis draws those in its range. */
void setMarks(QValueAxis& axis, double first, double step, const QString& format) {
    axis.setTickType(QValueAxis::TicksDynamic);
    axis.setTickAnchor(first);
    axis.setTickInterval(step);
    axis.setLabelFormat(format);
}

}  // namespace

PlotPanel::PlotPanel(const QString& title, const QList<Line>& lines, QWidget* parent)
    : QChartView(parent),
      m_styles(lines),
      m_quantity(new QGraphicsSimpleTextItem(chart())),
      m_axis(new QGraphicsSimpleTextItem(chart())),
      m_x(new QValueAxis),
      m_y(new QValueAxis) {
    QChart* const plot = chart();
    plot->legend()->hide();
    plot->setMargins({});
    plot->layout()->setContentsMargins(0, 0, 0, 0);
    plot->setBackgroundVisible(false);
    plot->addAxis(m_x, Qt::AlignBottom);
    plot->addAxis(m_y, Qt::AlignLeft);
    for (const Line& line : lines) {
        auto* const series = new QLineSeries;
        series->setName(line.name);
        plot->addSeries(series);
        series->attachAxis(m_x);
        series->attachAxis(m_y);
        m_lines.append(series);
    }
    setRenderHint(QPainter::Antialiasing);
    setFrameShape(QFrame::NoFrame);
    // The panel handles no keys, so the Tab key should skip it.
    setFocusPolicy(Qt::NoFocus);
    viewport()->setFocusPolicy(Qt::NoFocus);
    setAccessibleName(title);
    setAxisRange(0.0, 1.0);
    setQuantity(title, {});
    setAxis({}, {});
    applyPalette();
    setHeight({});
}

void PlotPanel::setQuantity(const QString& name, const QString& unit) {
    m_quantity->setText(laps::labelWithUnit(name, unit));
}

void PlotPanel::setAxis(const QString& name, const QString& unit) {
    m_x->setLabelsVisible(!name.isEmpty());
    m_axis->setText(name.isEmpty() ? QString() : laps::labelWithUnit(name, unit));
    updateMinimumSize();
    placePlot();
}

void PlotPanel::setAxisRange(double low, double high) {
    m_across = {low, high, false, false};
    markAxis();
}

/** Sets as many marks as their numbers leave room for. */
void PlotPanel::markAxis() {
    const QFontMetricsF metrics(font());
    const double number = metrics.horizontalAdvance(usualNumber());
    const int marks = std::clamp(static_cast<int>(chart()->plotArea().width() / (2.0 * number)),
                                 kMinMarks, kMaxMarks);
    const lapimage::Ticks ticks = lapimage::ticksFor(m_across.low, m_across.high, marks);
    setMarks(*m_x, ticks.lowest(), ticks.values.at(1) - ticks.values.at(0),
             numberFormat(ticks.values, ticks.decimals, metrics, number));
    m_x->setRange(m_across.low, m_across.high > m_across.low ? m_across.high : ticks.highest());
}

void PlotPanel::setPoints(qsizetype line, const QList<QPointF>& points) {
    m_lines.at(line)->replace(points);
}

QPointF PlotPanel::placeOf(const QPointF& point) const {
    const QRectF area = chart()->plotArea();
    const double across = (point.x() - m_x->min()) / (m_x->max() - m_x->min());
    const double up = (point.y() - m_y->min()) / (m_y->max() - m_y->min());
    return {area.left() + across * area.width(), area.bottom() - up * area.height()};
}

PlotPanel::Range PlotPanel::heightOfPoints() const {
    Range range;
    for (const QLineSeries* line : m_lines) {
        const QList<QPointF> points = line->points();
        for (const QPointF& point : points) {
            range.low = range.isEmpty ? point.y() : std::min(range.low, point.y());
            range.high = range.isEmpty ? point.y() : std::max(range.high, point.y());
            range.isWhole = range.isWhole && point.y() == std::floor(point.y());
            range.isEmpty = false;
        }
    }
    return range;
}

void PlotPanel::fitHeight() {
    Range range = heightOfPoints();
    // A quantity that comes near zero is shown from zero.
    if (!range.isEmpty && range.low > 0.0 && range.low < range.high / 2.0) {
        range.low = 0.0;
    }
    setHeight(range);
}

void PlotPanel::growHeight() {
    const Range range = heightOfPoints();
    if (range.isEmpty ||
        (range.low >= m_y->min() && range.high <= m_y->max() && !m_shown.isEmpty)) {
        return;
    }
    setHeight({std::min({0.0, range.low, m_shown.low}), std::max(range.high, m_shown.high), false,
               range.isWhole});
}

void PlotPanel::setHeight(const Range& range) {
    m_shown = range;
    const QFontMetricsF metrics(font());
    const int marks =
        std::clamp(static_cast<int>(chart()->plotArea().height() / markHeight(metrics)), kMinMarks,
                   kMaxVerticalMarks);
    const lapimage::Scale scale =
        lapimage::scaleFor(range.low, range.isEmpty ? 1.0 : range.high, marks,
                           range.isWhole ? lapimage::Numbers::Whole : lapimage::Numbers::Any);
    setMarks(*m_y, scale.marks.constFirst(), scale.step,
             numberFormat(scale.marks, scale.decimals, metrics,
                          metrics.horizontalAdvance(widestNumber())));
    m_y->setRange(scale.low, scale.high);
}

/** Keeps room for readable numbers, which the chart's own minimum size does not. */
void PlotPanel::updateMinimumSize() {
    const QFontMetricsF metrics(font());
    const double above = metrics.height() + kGap;
    setMinimumSize(
        30 * fontMetrics().averageCharWidth(),
        static_cast<int>(std::ceil(above + kMinMarks * markHeight(metrics) + roomBelow(metrics))));
}

/** Room for the numbers and the title of the axis, or for half the lowest mark's number. */
double PlotPanel::roomBelow(const QFontMetricsF& metrics) const {
    const double line = metrics.height();
    return m_axis->text().isEmpty() ? 0.75 * line : 2.0 * line + 2.0 * kGap;
}

void PlotPanel::placePlot() {
    const QFontMetricsF metrics(font());
    const double line = metrics.height();
    const double left = metrics.horizontalAdvance(widestNumber()) + 2.0 * kGap;
    const double below = roomBelow(metrics);
    const double above = line + kGap;
    const QRectF area(left, above, std::max(1.0, width() - left - 2.0 * line),
                      std::max(1.0, height() - above - below));
    chart()->setPlotArea(area);
    markAxis();
    setHeight(m_shown);
    m_quantity->setPos(area.left(), 0.0);
    m_axis->setPos(area.center().x() - m_axis->boundingRect().width() / 2.0,
                   height() - line - kGap / 2.0);
}

void PlotPanel::applyPalette() {
    const QPalette& colours = palette();
    const bool isDark = lapimage::isDark(colours.color(QPalette::Base));
    const QColor text = colours.color(QPalette::Text);
    QColor grid = text;
    grid.setAlphaF(0.2F);
    setBackgroundBrush(colours.brush(QPalette::Base));
    for (QGraphicsSimpleTextItem* item : {m_quantity, m_axis}) {
        item->setFont(font());
        item->setBrush(text);
    }
    for (QValueAxis* axis : {m_x, m_y}) {
        axis->setLabelsFont(font());
        axis->setLabelsBrush(text);
        axis->setGridLinePen(QPen(grid, 1.0));
        axis->setLinePen(QPen(text, 1.0));
    }
    for (qsizetype i = 0; i < m_lines.size(); ++i) {
        const Line& style = m_styles.at(i);
        m_lines.at(i)->setPen(QPen(lapimage::colour(style.role, isDark), kCurveWidth,
                                   style.isDashed ? Qt::DashLine : Qt::SolidLine));
    }
}

void PlotPanel::changeEvent(QEvent* event) {
    QChartView::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::FontChange) {
        applyPalette();
        updateMinimumSize();
        placePlot();
    }
}

void PlotPanel::resizeEvent(QResizeEvent* event) {
    QChartView::resizeEvent(event);
    placePlot();
}

}  // namespace rataip::viewer
