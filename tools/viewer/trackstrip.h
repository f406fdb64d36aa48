#pragma once

#include "tools/viewer/carstate.h"

#include <QList>
#include <QRectF>
#include <QString>
#include <QWidget>

namespace rataip::viewer {

/**
 * The lap as a straight line with every car at its distance: the own car as a diamond, other cars
 * as discs, cars in the pits as squares. Cars in the pits are below the line, all others above it.
 * A car's slot number is shown where it fits, and its tooltip names the driver. Cars out of the
 * world are not shown.
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
        QRectF label;  // empty where the number does not fit
    };

    explicit TrackStrip(QWidget* parent = nullptr);

    void setCars(const QList<CarState>& cars);

    /** The marks in drawing order, the own car last. */
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
