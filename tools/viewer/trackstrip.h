#pragma once

#include "tools/viewer/carstate.h"

#include <QList>
#include <QRectF>
#include <QString>
#include <QWidget>

namespace rataip::viewer {

/**
 * The lap as a straight line with every car at its distance: the own car as a diamond, the others
 * as discs, those in the pits as squares; cars in the pits stand below the line, all others above
 * it. Each carries its slot's number where there is room for it; a car's tooltip names its driver.
 * Cars that are not in the world are not shown.
 */
class TrackStrip : public QWidget {
    Q_OBJECT

public:
    enum class Shape {
        Diamond,
        Disc,
        Square,
    };

    /** A car as it is drawn. */
    struct Mark {
        Shape shape = Shape::Disc;
        bool isInPits = false;
        QString slot;
        QString driver;
        QRectF box;
        QRectF label;  // empty where there is no room for the number
    };

    explicit TrackStrip(QWidget* parent = nullptr);

    void setCars(const QList<CarState>& cars);

    /** What stands where, the own car last. */
    [[nodiscard]] const QList<Mark>& marks() const { return m_marks; }

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void layOut();
    void placeLabels();
    [[nodiscard]] QRectF track() const;
    [[nodiscard]] double rowHeight() const;
    [[nodiscard]] QString tooltipAt(const QPointF& place) const;

    QList<CarState> m_cars;
    QList<Mark> m_marks;
};

}  // namespace rataip::viewer
