#pragma once

#include "sdk/lap.h"
#include "tools/lapimage/colours.h"
#include "tools/laps/curve.h"
#include "tools/laps/lapformat.h"

#include <QFont>
#include <QImage>
#include <QList>
#include <QPointF>
#include <QPolygonF>
#include <QRectF>
#include <QSize>
#include <QString>

class QPainter;

namespace rataip::lapimage {

/**
 * A picture of a lap: speed, pedals and gear over distance, each in a panel of its own.
 *
 * The constructor computes the layout, which can be read without looking at pixels; image() draws
 * it. A panel says so when the lap lacks its channels (the pedals of other cars are unknown), and
 * in a lap without distance all three do.
 *
 * Needs a QGuiApplication to measure texts.
 */
class LapPicture {
public:
    struct Text {
        QString text;
        QRectF box;  // the text fits in
        Qt::Alignment alignment = Qt::AlignCenter;
        QFont font;
        bool isUpright = false;  // reads from bottom to top
    };

    struct Curve {
        QString channel;
        Role role = Role::ThisLap;
        QList<QPointF> points;  // over the axis, in the units on the sheet
        double factor = 1.0;    // of the channel's unit to the sheet's
        QString unit;           // on the sheet
        QPolygonF line;         // on the sheet
    };

    /** A sample of a line beside its text in the legend. */
    struct Key {
        QPointF start;
        QPointF end;
        Role role = Role::ThisLap;
    };

    /** A number on an axis. */
    struct Mark {
        double value = 0.0;
        double place = 0.0;  // on the sheet, along the axis
    };

    struct Panel {
        QRectF area;
        QList<Key> keys;
        QList<Curve> curves;
        QList<Mark> xMarks;
        QList<Mark> yMarks;
    };

    LapPicture(const TLM::SDK::Lap& lap, const QSize& size);

    [[nodiscard]] const QList<Text>& texts() const { return m_texts; }
    [[nodiscard]] const QList<Panel>& panels() const { return m_panels; }
    [[nodiscard]] QSize size() const { return m_size; }

    /** Draws the picture with `scale` pixels for each of its units. */
    [[nodiscard]] QImage image(double scale = 1.0) const;

private:
    struct Source {
        QString channel;
        QString label;
        Role role;
    };

    void addTitle(const TLM::SDK::Lap& lap);
    [[nodiscard]] QList<Curve> curvesOf(const TLM::SDK::Lap& lap,
                                        const QList<Source>& sources) const;
    void addPanel(const TLM::SDK::Lap& lap, const QRectF& area, const QString& name,
                  const QList<Source>& sources);
    void addMarkTexts(const Panel& panel, int xDecimals, int yDecimals);
    void addLegend(Panel& panel, const QList<Source>& sources);
    void addText(const QString& text, const QRectF& box, Qt::Alignment alignment, const QFont& font,
                 bool isUpright = false);
    void paint(QPainter& painter) const;
    static void paintPanel(QPainter& painter, const Panel& panel);

    QSize m_size;
    QFont m_font;
    QFont m_titleFont;
    laps::AxisValues m_axis;
    QList<Text> m_texts;
    QList<Panel> m_panels;
};

/** The format "png": a LapPicture. Needs a QGuiApplication. */
[[nodiscard]] laps::LapFormat pngFormat();

}  // namespace rataip::lapimage
