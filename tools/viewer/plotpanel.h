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
 * A plot over a shared axis. The plots of panels with the same width line up exactly, however wide
 * their numbers are. Follows the palette of its window.
 *
 * The panel draws the axis titles itself, because the chart would shorten them.
 */
class PlotPanel : public QChartView {
    Q_OBJECT

public:
    /** A line of the plot. A dashed line differs from others by more than its colour. */
    struct Line {
        QString name;
        lapimage::Role role = lapimage::Role::ThisLap;
        bool isDashed = false;
    };

    PlotPanel(const QString& title, const QList<Line>& lines, QWidget* parent = nullptr);

    /** The quantity and its unit, above the plot. */
    void setQuantity(const QString& name, const QString& unit);
    /** The title of the shared axis. With an empty name its marks have no numbers. */
    void setAxis(const QString& name, const QString& unit);
    void setAxisRange(double low, double high);

    /** Replaces a line's points. Call fitHeight() after setting all lines. */
    void setPoints(qsizetype line, const QList<QPointF>& points);

    /** Fits the vertical range to all points. It starts at zero where they come near it. */
    void fitHeight();

    /** Like fitHeight(), but never shrinks the range. For lines that are still growing. */
    void growHeight();

    /** The position of a point in the widget with the current axes. */
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
        bool isWhole = true;  // all values are whole numbers
    };

    void applyPalette();
    void updateMinimumSize();
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
