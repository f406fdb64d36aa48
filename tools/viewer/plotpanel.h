#pragma once

#include "tools/lapimage/colours.h"

#include <QChartView>
#include <QFontMetricsF>
#include <QGraphicsSimpleTextItem>
#include <QLineSeries>
#include <QList>
#include <QPointF>
#include <QString>
#include <QValueAxis>

namespace rataip::viewer {

/**
 * One plot over a shared axis: panels of one width stand exactly above each other, whatever their
 * numbers look like. Follows the palette of its window.
 *
 * The texts beside the plot are the panel's own: those of the chart's axes are cut to the length
 * that the chart thinks fit.
 */
class PlotPanel : public QChartView {
    Q_OBJECT

public:
    /** A line of the plot; `isDashed` tells it apart where its colour does not. */
    struct Line {
        QString name;
        lapimage::Role role = lapimage::Role::ThisLap;
        bool isDashed = false;
    };

    PlotPanel(const QString& title, const QList<Line>& lines, QWidget* parent = nullptr);

    /** The quantity and its unit, above the plot. */
    void setQuantity(const QString& name, const QString& unit);
    /** What the plot is over; an empty name leaves the marks without numbers. */
    void setAxis(const QString& name, const QString& unit);
    void setAxisRange(double low, double high);

    /** Replaces a line's points; call fitHeight() when all lines have theirs. */
    void setPoints(qsizetype line, const QList<QPointF>& points);

    /** Lets the height of the plot hold all points, from zero on where they are near it. */
    void fitHeight();

    /** The same, but the height never shrinks: for lines that are still being drawn. */
    void growHeight();

    /** Where a point lies in the widget as its axes are now. */
    [[nodiscard]] QPointF placeOf(const QPointF& point) const;

    [[nodiscard]] const QList<QLineSeries*>& lines() const { return m_lines; }
    [[nodiscard]] QString quantityText() const { return m_quantity->text(); }
    [[nodiscard]] QString axisText() const { return m_axis->text(); }
    [[nodiscard]] const QValueAxis& xAxis() const { return *m_x; }
    [[nodiscard]] const QValueAxis& yAxis() const { return *m_y; }

protected:
    void changeEvent(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    struct Range {
        double low = 0.0;
        double high = 0.0;
        bool isEmpty = true;
        bool isWhole = true;  // every number in it
    };

    void applyPalette();
    void setLeastSize();
    [[nodiscard]] double roomBelow(const QFontMetricsF& metrics) const;
    void placePlot();
    void markAxis();
    void setHeight(const Range& range);
    [[nodiscard]] Range heightOfPoints() const;

    QList<Line> m_styles;
    QList<QLineSeries*> m_lines;          // owned by the chart
    QGraphicsSimpleTextItem* m_quantity;  // owned by the chart
    QGraphicsSimpleTextItem* m_axis;      // owned by the chart
    QValueAxis* m_x;                      // owned by the chart
    QValueAxis* m_y;                      // owned by the chart
    Range m_shown;
    Range m_across;
};

}  // namespace rataip::viewer
