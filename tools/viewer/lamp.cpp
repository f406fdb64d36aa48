#include "tools/viewer/lamp.h"

#include "tools/lapimage/colours.h"

#include <QPainter>

namespace rataip::viewer {

using lapimage::Role;

namespace {

QString nameOf(bool isLit) {
    return isLit ? QStringLiteral("Data is arriving") : QStringLiteral("No data is arriving");
}

}  // namespace

Lamp::Lamp(QWidget* parent) : QWidget(parent) {
    setAccessibleName(nameOf(m_isLit));
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void Lamp::setLit(bool isLit) {
    if (m_isLit != isLit) {
        m_isLit = isLit;
        setAccessibleName(nameOf(isLit));
        update();
    }
}

QSize Lamp::sizeHint() const {
    const int height = fontMetrics().height();
    return {height, height};
}

void Lamp::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const bool isDark = lapimage::isDark(palette().color(QPalette::Window));
    const QColor colour = lapimage::colour(m_isLit ? Role::Good : Role::Bad, isDark);
    const double penWidth = 2.0;
    const QRectF disc = QRectF(rect()).adjusted(penWidth, penWidth, -penWidth, -penWidth);
    painter.setPen(QPen(colour, penWidth));
    painter.setBrush(m_isLit ? QBrush(colour) : QBrush(Qt::NoBrush));
    painter.drawEllipse(disc);
    if (!m_isLit) {
        const double inset = disc.width() / 4.0;
        const QRectF cross = disc.adjusted(inset, inset, -inset, -inset);
        painter.drawLine(cross.topLeft(), cross.bottomRight());
        painter.drawLine(cross.topRight(), cross.bottomLeft());
    }
}

}  // namespace rataip::viewer
