#include "tools/viewer/trackstrip.h"

#include "tools/lapimage/colours.h"

#include <QHelpEvent>
#include <QPainter>
#include <QPolygonF>
#include <QToolTip>

#include <algorithm>
#include <vector>

namespace rataip::viewer {

using lapimage::Role;

namespace {

constexpr int kLabelRows = 3;     // above the line, of the cars on the track
constexpr int kPitLabelRows = 1;  // below it, of the cars in the pits
constexpr int kDistanceRows = 1;  // below those, of the distances
constexpr int kGridLines = 10;
constexpr double kLabelGap = 2.0;
constexpr double kMarkSize = 12.0;
constexpr double kOwnMarkSize = 18.0;

TrackStrip::Shape shapeOf(const CarState& car) {
    if (car.isOwn()) {
        return TrackStrip::Shape::Diamond;
    }
    return car.isInPits() ? TrackStrip::Shape::Square : TrackStrip::Shape::Disc;
}

Role roleOf(TrackStrip::Shape shape) {
    switch (shape) {
        case TrackStrip::Shape::Diamond:
            return Role::OwnCar;
        case TrackStrip::Shape::Square:
            return Role::CarInPits;
        case TrackStrip::Shape::Disc:
            break;
    }
    return Role::OtherCar;
}

QPolygonF diamond(const QRectF& box) {
    return QPolygonF({{box.center().x(), box.top()},
                      {box.right(), box.center().y()},
                      {box.center().x(), box.bottom()},
                      {box.left(), box.center().y()}});
}

void paintMark(QPainter& painter, const TrackStrip::Mark& mark) {
    switch (mark.shape) {
        case TrackStrip::Shape::Diamond:
            painter.drawPolygon(diamond(mark.box));
            break;
        case TrackStrip::Shape::Disc:
            painter.drawEllipse(mark.box);
            break;
        case TrackStrip::Shape::Square:
            painter.drawRect(mark.box);
            break;
    }
}

}  // namespace

TrackStrip::TrackStrip(QWidget* parent) : QWidget(parent) {
    setAccessibleName(QStringLiteral("Track strip"));
    setAccessibleDescription(QStringLiteral("Every car at its distance on the lap"));
    setMinimumHeight(TrackStrip::minimumSizeHint().height());
}

QSize TrackStrip::minimumSizeHint() const {
    return {20 * fontMetrics().averageCharWidth(),
            static_cast<int>((kLabelRows + kPitLabelRows + kDistanceRows) * rowHeight() +
                             2 * kOwnMarkSize)};
}

QSize TrackStrip::sizeHint() const {
    return {3 * minimumSizeHint().width(), minimumSizeHint().height()};
}

double TrackStrip::rowHeight() const {
    return fontMetrics().height();
}

/** The line and the space for marks above and below it. */
QRectF TrackStrip::track() const {
    const double side = fontMetrics().horizontalAdvance(QStringLiteral("100 %"));
    const double top = kLabelRows * rowHeight();
    return {side, top, std::max(1.0, width() - 2.0 * side), 2.0 * kOwnMarkSize};
}

void TrackStrip::setCars(const QList<CarState>& cars) {
    m_cars = cars;
    layOut();
    update();
}

void TrackStrip::layOut() {
    m_marks.clear();
    const QRectF line = track();
    for (const CarState& car : m_cars) {
        if (!car.isInWorld()) {
            continue;
        }
        Mark mark;
        mark.shape = shapeOf(car);
        mark.isInPits = car.isInPits();
        mark.slot = car.info.carId();
        mark.driver = car.info.driverName();
        const double size = car.isOwn() ? kOwnMarkSize : kMarkSize;
        const double offset = (mark.isInPits ? 0.5 : -0.5) * kOwnMarkSize;
        mark.box = QRectF(0.0, 0.0, size, size);
        mark.box.moveCenter({line.left() + *car.share * line.width(), line.center().y() + offset});
        if (car.isOwn()) {
            m_marks.append(mark);
        } else {
            m_marks.prepend(mark);
        }
    }
    placeLabels();
}

/**
 * Places the own car's number first, then the others from left to right, each in the free row
 * nearest to the line.
 */
void TrackStrip::placeLabels() {
    std::vector<Mark*> order;
    for (Mark& mark : m_marks) {
        order.push_back(&mark);
    }
    const auto isBefore = [](const Mark* left, const Mark* right) {
        const bool isLeftOwn = left->shape == Shape::Diamond;
        const bool isRightOwn = right->shape == Shape::Diamond;
        return isLeftOwn != isRightOwn ? isLeftOwn
                                       : left->box.center().x() < right->box.center().x();
    };
    std::sort(order.begin(), order.end(), isBefore);

    QList<QRectF> taken;
    const QRectF line = track();
    for (Mark* mark : order) {
        const double width = fontMetrics().horizontalAdvance(mark->slot) + kLabelGap;
        const int rows = mark->isInPits ? kPitLabelRows : kLabelRows;
        for (int row = 0; row < rows && mark->label.isEmpty(); ++row) {
            const double top = mark->isInPits ? line.bottom() + row * rowHeight()
                                              : line.top() - (row + 1) * rowHeight();
            const QRectF box(mark->box.center().x() - width / 2.0, top, width, rowHeight());
            const bool isFree =
                std::none_of(taken.cbegin(), taken.cend(),
                             [&](const QRectF& other) { return other.intersects(box); });
            if (isFree) {
                mark->label = box;
                taken.append(box);
            }
        }
    }
}

void TrackStrip::resizeEvent(QResizeEvent*) {
    layOut();
}

void TrackStrip::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillRect(rect(), palette().base());
    const bool isDark = lapimage::isDark(palette().color(QPalette::Base));
    const QRectF line = track();

    painter.setPen(QPen(palette().color(QPalette::Mid), 1.0));
    for (int i = 0; i <= kGridLines; ++i) {
        const double x = line.left() + i * line.width() / kGridLines;
        painter.drawLine(QPointF(x, line.top()), QPointF(x, line.bottom()));
    }
    painter.setPen(QPen(palette().color(QPalette::Text), 2.0));
    painter.drawLine(QPointF(line.left(), line.center().y()),
                     QPointF(line.right(), line.center().y()));
    for (int i = 0; i <= kGridLines; i += 2) {
        const double x = line.left() + i * line.width() / kGridLines;
        const double width = 2.0 * line.left();
        painter.drawText(QRectF(x - width / 2.0, line.bottom() + kPitLabelRows * rowHeight(), width,
                                rowHeight()),
                         static_cast<int>(Qt::AlignCenter),
                         QStringLiteral("%1 %").arg(100 * i / kGridLines));
    }

    for (const Mark& mark : m_marks) {
        painter.setPen(QPen(palette().color(QPalette::Base), 1.0));
        painter.setBrush(lapimage::colour(roleOf(mark.shape), isDark));
        paintMark(painter, mark);
        painter.setPen(palette().color(QPalette::Text));
        if (!mark.label.isEmpty()) {
            painter.drawText(mark.label, static_cast<int>(Qt::AlignCenter), mark.slot);
        }
    }
    if (m_marks.isEmpty()) {
        painter.setPen(palette().color(QPalette::Text));
        painter.drawText(QRectF(0.0, 0.0, width(), line.top()), static_cast<int>(Qt::AlignCenter),
                         QStringLiteral("No car is on the track"));
    }
}

QString TrackStrip::tooltipAt(const QPointF& place) const {
    // Backwards, because the topmost mark is drawn last.
    const auto mark =
        std::find_if(m_marks.crbegin(), m_marks.crend(), [&place](const Mark& candidate) {
            return candidate.box.contains(place) || candidate.label.contains(place);
        });
    return mark == m_marks.crend() ? QString()
                                   : QStringLiteral("%1  %2").arg(mark->slot, mark->driver);
}

bool TrackStrip::event(QEvent* event) {
    if (event->type() == QEvent::ToolTip) {
        const auto* const help = static_cast<QHelpEvent*>(event);
        QToolTip::showText(help->globalPos(), tooltipAt(help->pos()), this);
        return true;
    }
    return QWidget::event(event);
}

}  // namespace rataip::viewer
