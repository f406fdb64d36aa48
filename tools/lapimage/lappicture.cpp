#include "tools/lapimage/lappicture.h"

#include "tools/host/laptext.h"
#include "tools/lapimage/scale.h"
#include "tools/lapimage/ticks.h"
#include "tools/laps/displayunit.h"
#include "tools/laps/newfile.h"

#include <QBuffer>
#include <QFontMetricsF>
#include <QPainter>
#include <QPen>
#include <QStringList>

#include <algorithm>
#include <cmath>
#include <iterator>

namespace rataip::lapimage {

using laps::Range;
using TLM::SDK::Lap;

namespace {

constexpr QSize kSheetSize(1280, 800);
constexpr int kTextHeight = 15;
constexpr int kTitleHeight = 21;
constexpr double kMargin = 18.0;
constexpr double kTitleSpace = 66.0;
constexpr double kLeftSpace = 96.0;  // for the marks' numbers and the vertical label
constexpr double kHeadSpace = 26.0;  // above each panel, for its legend
constexpr double kFootSpace = 56.0;  // below the lowest panel, for the axis
constexpr double kBelowPlot = 12.0;  // keeps clear of the lowest number beside the plot
constexpr double kMarkLabelWidth = 60.0;
constexpr double kMarkLabelHeight = 20.0;
constexpr double kLegendLineLength = 26.0;
constexpr int kMarksAcross = 12;
constexpr int kMarksUp = 5;
// Speed gets half of the height, pedals and gear share the rest.
constexpr double kPanelShares[] = {0.5, 0.28, 0.22};
constexpr qsizetype kPanelCount = std::size(kPanelShares);
constexpr QRgb kGridGrey = qRgb(214, 214, 214);
constexpr QRgb kFrameGrey = qRgb(120, 120, 120);
constexpr double kLineWidth = 1.6;

QString joined(const QStringList& parts) {
    QStringList present = parts;
    present.removeAll(QString());
    return present.join(QStringLiteral("  ·  "));
}

QString firstLine(const Lap& lap) {
    return joined({lap.driverName(), QStringLiteral("lap %1").arg(lap.lapInSession()),
                   host::lapTimeText(lap.lapTime())});
}

QString secondLine(const Lap& lap) {
    return joined({lap.carName(), joined({lap.trackName(), lap.trackConfig()}),
                   host::lapTypeText(lap.lapType()) + QStringLiteral(" lap"),
                   host::completionText(lap.completed()),
                   lap.dateTime().toString(QStringLiteral("yyyy-MM-dd hh:mm"))});
}

QList<QPointF> shownPoints(const QList<QPointF>& points, double factor) {
    QList<QPointF> shown = points;
    for (QPointF& point : shown) {
        point.setY(point.y() * factor);
    }
    return shown;
}

/** From zero, or from the lowest point below it, to the highest point. */
Range heightOf(const QList<LapPicture::Curve>& curves) {
    Range range;
    for (const LapPicture::Curve& curve : curves) {
        for (const QPointF& point : curve.points) {
            range.low = std::min(range.low, point.y());
            range.high = std::max(range.high, point.y());
        }
    }
    return range;
}

bool hasWholeNumbers(const QList<LapPicture::Curve>& curves) {
    return std::all_of(curves.cbegin(), curves.cend(), [](const LapPicture::Curve& curve) {
        return std::all_of(curve.points.cbegin(), curve.points.cend(),
                           [](const QPointF& point) { return point.y() == std::floor(point.y()); });
    });
}

QPen penOf(Role role) {
    return {colour(role, false), kLineWidth, role == Role::Brake ? Qt::DashLine : Qt::SolidLine};
}

/** Where a number lies in a range, 0 to 1. */
double shareOf(double value, const Range& range) {
    return (value - range.low) / (range.high - range.low);
}

/** The marks of the horizontal axis and the range that it shows. */
struct AcrossScale {
    Ticks ticks;
    Range range;
};

/** Ends at the end of the lap so that no space is wasted. An empty range ends at marks. */
AcrossScale acrossScale(const Range& width) {
    Ticks ticks = ticksFor(width.low, width.high, kMarksAcross);
    if (!(width.low < width.high)) {
        return {ticks, {ticks.lowest(), ticks.highest()}};
    }
    ticks.values.removeIf(
        [&width](double value) { return value < width.low || value > width.high; });
    return {ticks, width};
}

// Through memory, because the image writer hides the device's error.
bool writePng(const Lap& lap, QIODevice& device) {
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    return LapPicture(lap, kSheetSize).image().save(&buffer, "PNG") &&
           laps::writeAll(device, buffer.data());
}

}  // namespace

LapPicture::LapPicture(const Lap& lap, const QSize& size)
    : m_size(size), m_axis(laps::axisOf(lap, laps::Axis::Distance)) {
    m_font.setPixelSize(kTextHeight);
    m_titleFont.setPixelSize(kTitleHeight);
    m_titleFont.setBold(true);
    addTitle(lap);

    const QList<Source> sources[] = {
        {{QStringLiteral("speed"), QStringLiteral("Speed"), Role::ThisLap}},
        {{QStringLiteral("throttle"), QStringLiteral("Throttle"), Role::Throttle},
         {QStringLiteral("brake"), QStringLiteral("Brake (dashed)"), Role::Brake}},
        {{QStringLiteral("gear"), QStringLiteral("Gear"), Role::ThisLap}}};
    const QString names[] = {QStringLiteral("Speed"), QStringLiteral("Pedals"),
                             QStringLiteral("Gear")};
    const double room = size.height() - kTitleSpace - kFootSpace;
    double top = kTitleSpace;
    for (qsizetype i = 0; i < kPanelCount; ++i) {
        const double height = kPanelShares[i] * room;
        const QRectF area(kLeftSpace, top + kHeadSpace, size.width() - kLeftSpace - 2 * kMargin,
                          height - kHeadSpace);
        addPanel(lap, area, names[i], sources[i]);
        top += height;
    }
}

void LapPicture::addTitle(const Lap& lap) {
    const double width = m_size.width() - 2 * kMargin;
    addText(firstLine(lap), {kMargin, 8.0, width, 30.0}, Qt::AlignLeft | Qt::AlignVCenter,
            m_titleFont);
    addText(secondLine(lap), {kMargin, 38.0, width, 24.0}, Qt::AlignLeft | Qt::AlignVCenter,
            m_font);
}

void LapPicture::addText(const QString& text, const QRectF& box, Qt::Alignment alignment,
                         const QFont& font, bool isUpright) {
    const double room = isUpright ? box.height() : box.width();
    const QString shown = QFontMetricsF(font).elidedText(text, Qt::ElideRight, room);
    m_texts.append({shown, box, alignment, font, isUpright});
}

QList<LapPicture::Curve> LapPicture::curvesOf(const Lap& lap, const QList<Source>& sources) const {
    QList<Curve> curves;
    for (const Source& source : sources) {
        const auto channel = lap.channel(source.channel);
        if (!channel) {
            continue;
        }
        const laps::DisplayUnit display = laps::displayUnit(channel->unit());
        const QList<QPointF> points = shownPoints(laps::curveOf(*channel, m_axis), display.factor);
        if (!points.isEmpty()) {
            curves.append({source.channel, source.role, points, display.factor, display.unit, {}});
        }
    }
    return curves;
}

void LapPicture::addPanel(const Lap& lap, const QRectF& area, const QString& name,
                          const QList<Source>& sources) {
    Panel panel;
    panel.area = area;
    panel.curves = curvesOf(lap, sources);
    const QString unit = panel.curves.isEmpty() ? QString() : panel.curves.constFirst().unit;
    addText(laps::labelWithUnit(name, unit),
            {kMargin / 2, area.top(), kMarkLabelHeight, area.height()}, Qt::AlignCenter, m_font,
            true);
    if (panel.curves.isEmpty()) {
        addText(QStringLiteral("%1: not recorded in this lap").arg(name), area, Qt::AlignCenter,
                m_font);
        m_panels.append(panel);
        return;
    }

    const Range height = heightOf(panel.curves);
    const Scale up = scaleFor(height.low, height.high, kMarksUp,
                              hasWholeNumbers(panel.curves) ? Numbers::Whole : Numbers::Any);
    Range width;
    laps::widen(width, m_axis);
    const AcrossScale across = acrossScale(width);
    for (Curve& curve : panel.curves) {
        for (const QPointF& point : curve.points) {
            curve.line.append(
                {area.left() + shareOf(point.x(), across.range) * area.width(),
                 area.bottom() - shareOf(point.y(), {up.low, up.high}) * area.height()});
        }
    }
    for (const double value : up.marks) {
        panel.yMarks.append(
            {value, area.bottom() - shareOf(value, {up.low, up.high}) * area.height()});
    }
    for (const double value : across.ticks.values) {
        panel.xMarks.append({value, area.left() + shareOf(value, across.range) * area.width()});
    }
    addMarkTexts(panel, across.ticks.decimals, up.decimals);
    if (sources.size() > 1) {
        addLegend(panel, sources);
    }
    m_panels.append(panel);
}

void LapPicture::addMarkTexts(const Panel& panel, int xDecimals, int yDecimals) {
    const QRectF& area = panel.area;
    for (const Mark& mark : panel.yMarks) {
        addText(QString::number(mark.value, 'f', yDecimals),
                {area.left() - kMarkLabelWidth - 6.0, mark.place - kMarkLabelHeight / 2,
                 kMarkLabelWidth, kMarkLabelHeight},
                Qt::AlignRight | Qt::AlignVCenter, m_font);
    }
    const bool isLowest = m_panels.size() + 1 == kPanelCount;
    if (!isLowest) {
        return;
    }
    for (const Mark& mark : panel.xMarks) {
        addText(QString::number(mark.value, 'f', xDecimals),
                {mark.place - kMarkLabelWidth / 2, area.bottom() + kBelowPlot, kMarkLabelWidth,
                 kMarkLabelHeight},
                Qt::AlignCenter, m_font);
    }
    addText(laps::labelWithUnit(m_axis.name, m_axis.unit),
            {area.left(), area.bottom() + kBelowPlot + kMarkLabelHeight, area.width(),
             kMarkLabelHeight},
            Qt::AlignCenter, m_font);
}

void LapPicture::addLegend(Panel& panel, const QList<Source>& sources) {
    double right = panel.area.right();
    const double top = panel.area.top() - kHeadSpace;
    for (qsizetype i = sources.size() - 1; i >= 0; --i) {
        const Source& source = sources.at(i);
        const double width = std::ceil(QFontMetricsF(m_font).horizontalAdvance(source.label)) + 2.0;
        const QRectF box(right - width, top, width, kHeadSpace);
        addText(source.label, box, Qt::AlignRight | Qt::AlignVCenter, m_font);
        const QPointF end(box.left() - 6.0, box.center().y());
        panel.keys.append({end - QPointF(kLegendLineLength, 0.0), end, source.role});
        right = end.x() - kLegendLineLength - kMargin;
    }
}

QImage LapPicture::image(double scale) const {
    const QSize pixels = (QSizeF(m_size) * scale).toSize();
    QImage image(pixels, QImage::Format_RGB32);
    image.fill(Qt::white);
    image.setDevicePixelRatio(scale);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    paint(painter);
    return image;
}

void LapPicture::paintPanel(QPainter& painter, const Panel& panel) {
    painter.setPen(QPen(QColor(kGridGrey), 1.0));
    for (const Mark& mark : panel.xMarks) {
        painter.drawLine(QPointF(mark.place, panel.area.top()),
                         QPointF(mark.place, panel.area.bottom()));
    }
    for (const Mark& mark : panel.yMarks) {
        painter.drawLine(QPointF(panel.area.left(), mark.place),
                         QPointF(panel.area.right(), mark.place));
    }
    painter.setPen(QPen(QColor(kFrameGrey), 1.0));
    painter.drawRect(panel.area);
    for (const Curve& curve : panel.curves) {
        painter.setPen(penOf(curve.role));
        painter.drawPolyline(curve.line);
    }
    for (const Key& key : panel.keys) {
        painter.setPen(penOf(key.role));
        painter.drawLine(key.start, key.end);
    }
}

void LapPicture::paint(QPainter& painter) const {
    for (const Panel& panel : m_panels) {
        paintPanel(painter, panel);
    }
    painter.setPen(Qt::black);
    for (const Text& text : m_texts) {
        painter.setFont(text.font);
        if (text.isUpright) {
            painter.save();
            painter.translate(text.box.left(), text.box.bottom());
            painter.rotate(-90.0);
            painter.drawText(QRectF(0.0, 0.0, text.box.height(), text.box.width()),
                             static_cast<int>(text.alignment), text.text);
            painter.restore();
        } else {
            painter.drawText(text.box, static_cast<int>(text.alignment), text.text);
        }
    }
}

laps::LapFormat pngFormat() {
    return {QStringLiteral("png"), &writePng};
}

}  // namespace rataip::lapimage
