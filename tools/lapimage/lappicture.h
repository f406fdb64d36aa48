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
 * A lap on one sheet: speed, pedals and gear over distance, each in a panel of its own.
 *
 * The sheet is laid out when the object is made and drawn when it is asked for, so that what stands
 * where can be read without looking at pixels. A panel whose channels the lap lacks (other cars'
 * pedals are not known) says so; a lap without distance yields three such panels.
 *
 * Needs a QGuiApplication: texts are measured.
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

    /** A piece of line beside a legend's text. */
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

    /** The sheet, `scale` pixels for each of its units. */
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

/** A LapPicture as a format, suffix "png". Needs a QGuiApplication. */
[[nodiscard]] laps::LapFormat pngFormat();

}  // namespace rataip::lapimage
