#pragma once

#include "tools/viewer/livelap.h"
#include "tools/viewer/plotpanel.h"

#include <QLabel>
#include <QList>
#include <QWidget>

namespace rataip::viewer {

/**
 * Live traces of the own car: speed, pedals, gear and steering over the lap in percent, each with
 * the previous flying lap as a dashed line behind it.
 */
class LiveTraces : public QWidget {
    Q_OBJECT

public:
    explicit LiveTraces(QWidget* parent = nullptr);

    /**
     * Draws the lap as it is now, thinned to the resolution of the widget. A plot whose lines grew
     * by less than a pixel is not redrawn, because painting lines takes most of the window's time.
     */
    void show(const LiveLap& lap);
    using QWidget::show;

    [[nodiscard]] const QList<PlotPanel*>& panels() const { return m_panels; }

protected:
    void changeEvent(QEvent* event) override;

private:
    void describeLines();

    /** A line of a panel and the trace that it shows. */
    struct Place {
        PlotPanel* panel;
        qsizetype line;
        std::size_t trace;
        bool isPrevious;
        qsizetype pointsDrawn = 0;
        QPointF newestDrawn = {};
    };

    [[nodiscard]] bool hasMoved(const Place& place, const QList<QPointF>& curve) const;
    [[nodiscard]] bool hasMoved(const PlotPanel* panel, const TraceCurves& curves) const;
    static void draw(Place& place, const LiveLap& lap, qsizetype columns);

    QLabel* m_legend;
    QList<PlotPanel*> m_panels;
    QList<Place> m_places;
    int m_previousShown = -1;
    int m_widthShown = 0;
};

}  // namespace rataip::viewer
