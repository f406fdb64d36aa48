#include "tools/viewer/plotpanel.h"

#include "tests/tools/viewer/texts.h"

#include <QChart>
#include <QCoreApplication>
#include <QImage>
#include <QPalette>

#include <gtest/gtest.h>

namespace {

using rataip::lapimage::Role;
using rataip::viewer::PlotPanel;

class Panel : public ::testing::Test {
protected:
    Panel() {
        panel.resize(700, 160);
        panel.setAxis(QStringLiteral("Distance"), QStringLiteral("m"));
        panel.setQuantity(QStringLiteral("speed"), QStringLiteral("m/s"));
        panel.show();
    }

    PlotPanel panel{QStringLiteral("speed"),
                    {{QStringLiteral("other"), Role::OtherLap, true},
                     {QStringLiteral("this"), Role::ThisLap, false}}};
};

TEST_F(Panel, HoldsThePointsThatItWasGiven) {
    const QList<QPointF> points = {{0.0, 1.0}, {10.0, 5.0}, {20.0, 3.0}};
    panel.setPoints(1, points);
    EXPECT_EQ(panel.lines().at(1)->points(), points);
    EXPECT_TRUE(panel.lines().at(0)->points().isEmpty());
}

TEST_F(Panel, SaysWhatItPlotsWithUnits) {
    EXPECT_EQ(panel.quantityText(), QStringLiteral("speed (m/s)"));
    EXPECT_EQ(panel.axisText(), QStringLiteral("Distance (m)"));
    panel.setQuantity(QStringLiteral("gear"), {});
    EXPECT_EQ(panel.quantityText(), QStringLiteral("gear"));
}

TEST_F(Panel, FitsItsHeightToAllLines) {
    panel.setPoints(0, {{0.0, -30.0}});
    panel.setPoints(1, {{0.0, 70.0}});
    panel.fitHeight();
    EXPECT_LE(panel.yAxis().min(), -30.0);
    EXPECT_GE(panel.yAxis().max(), 70.0);
}

TEST_F(Panel, ShowsWhatComesNearZeroFromZeroOn) {
    panel.setPoints(1, {{0.0, 20.0}, {1.0, 70.0}});
    panel.fitHeight();
    EXPECT_EQ(panel.yAxis().min(), 0.0);
    panel.setPoints(1, {{0.0, 1000.0}, {1.0, 1010.0}});
    panel.fitHeight();
    EXPECT_GT(panel.yAxis().min(), 900.0);
}

TEST_F(Panel, HasARangeWithoutPoints) {
    panel.fitHeight();
    EXPECT_LT(panel.yAxis().min(), panel.yAxis().max());
}

TEST_F(Panel, OnlyGrowsWhileALineIsDrawn) {
    panel.setPoints(1, {{0.0, 90.0}});
    panel.growHeight();
    const double high = panel.yAxis().max();
    EXPECT_GE(high, 90.0);
    panel.setPoints(1, {{0.0, 10.0}});
    panel.growHeight();
    EXPECT_EQ(panel.yAxis().max(), high);
    panel.setPoints(1, {{0.0, -10.0}});
    panel.growHeight();
    EXPECT_LE(panel.yAxis().min(), -10.0);
    EXPECT_EQ(panel.yAxis().max(), high);
}

TEST_F(Panel, ShowsTheWholeAxisRange) {
    panel.setAxisRange(0.0, 4612.5);
    EXPECT_EQ(panel.xAxis().min(), 0.0);
    EXPECT_EQ(panel.xAxis().max(), 4612.5);
    EXPECT_EQ(panel.xAxis().tickInterval(), 1000.0);
    panel.setAxisRange(0.0, 0.0);
    EXPECT_LT(panel.xAxis().min(), panel.xAxis().max());
}

TEST_F(Panel, GivesThePositionOfAPoint) {
    panel.setAxisRange(0.0, 200.0);
    panel.setPoints(1, {{0.0, 0.0}, {200.0, 100.0}});
    panel.fitHeight();
    const QRectF area = panel.chart()->plotArea();
    EXPECT_EQ(panel.placeOf({0.0, 0.0}), area.bottomLeft());
    EXPECT_EQ(panel.placeOf({200.0, 100.0}), area.topRight());
    for (const QPointF& point : panel.lines().at(1)->points()) {
        const QPointF drawn = panel.chart()->mapToPosition(point, panel.lines().at(1));
        EXPECT_NEAR(panel.placeOf(point).x(), drawn.x(), 1e-6);
        EXPECT_NEAR(panel.placeOf(point).y(), drawn.y(), 1e-6);
    }
}

TEST_F(Panel, FitsItsHeightToWhatItShows) {
    panel.setPoints(1, {{0.0, 0.0}, {1.0, 205.0}});
    panel.fitHeight();
    EXPECT_EQ(panel.yAxis().max(), 250.0) << "not 300";
    panel.setPoints(1, {{0.0, 4.0}, {1.0, 5.0}});
    panel.fitHeight();
    EXPECT_EQ(panel.yAxis().tickInterval(), 1.0) << "there are no half gears";
    EXPECT_EQ(panel.yAxis().labelFormat(), QStringLiteral("%.0f"));
}

TEST_F(Panel, DistinguishesLinesByMoreThanColour) {
    EXPECT_NE(panel.lines().at(0)->pen().style(), panel.lines().at(1)->pen().style());
    EXPECT_NE(panel.lines().at(0)->pen().color(), panel.lines().at(1)->pen().color());
}

TEST_F(Panel, LinesUpWithAnotherOfTheSameWidth) {
    PlotPanel other(QStringLiteral("force"), {{QStringLiteral("this"), Role::ThisLap, false}});
    other.resize(700, 300);
    other.setPoints(0, {{0.0, -123456.0}, {1.0, 654321.0}});
    other.fitHeight();
    other.show();
    EXPECT_EQ(other.chart()->plotArea().left(), panel.chart()->plotArea().left());
    EXPECT_EQ(other.chart()->plotArea().right(), panel.chart()->plotArea().right());
}

TEST_F(Panel, FollowsADarkPalette) {
    const QColor lightLine = panel.lines().at(1)->pen().color();
    QPalette dark;
    dark.setColor(QPalette::Base, QColor(30, 30, 30));
    dark.setColor(QPalette::Text, QColor(230, 230, 230));
    panel.setPalette(dark);
    const QImage image = panel.grab().toImage();
    EXPECT_EQ(QColor(image.pixel(1, 1)), QColor(30, 30, 30));
    EXPECT_EQ(panel.yAxis().labelsColor(), QColor(230, 230, 230));
    EXPECT_NE(panel.lines().at(1)->pen().color(), lightLine);
}

TEST_F(Panel, ShowsNumbersInFullFromItsMinimumSizeOn) {
    const QList<QPair<double, double>> ranges = {
        {0.0, 100.0},          {-45.0, 65.0}, {0.6, 1.4},   {1.0, 5.0},
        {-123456.0, 654321.0}, {1e-7, 2e-7},  {-1e-7, 0.0}, {-2147483648.0, 2147483647.0},
        {1.6e9, 1.6e9},        {1e15, 2e15},  {0.0, 1e300}, {-1e300, 1e300}};
    const QSize least = panel.minimumSize();
    for (const auto& [low, high] : ranges) {
        panel.setPoints(1, {{0.0, low}, {1.0, high}});
        for (const double across : {0.5, 99.0, 4612.5, 25'000.0, 3e9}) {
            panel.setAxisRange(0.0, across);
            for (int more = 0; more < 200; more += 7) {
                panel.resize(least + QSize(more, more));
                panel.fitHeight();
                QCoreApplication::processEvents();  // applies the layout
                const QStringList cut = textsCutOff(panel).filter(QStringLiteral("..."));
                ASSERT_TRUE(cut.isEmpty()) << low << " to " << high << ", " << more;
            }
        }
    }
}

TEST_F(Panel, DistinguishesMarksThatAreTooWideToBeWrittenInFull) {
    panel.setPoints(1, {{0.0, -2147483648.0}, {1.0, 2147483647.0}});
    panel.fitHeight();
    EXPECT_EQ(panel.yAxis().labelFormat(), QStringLiteral("%.0e"));
    panel.setPoints(1, {{0.0, 1.5e9}, {1.0, 1.6e9}});
    panel.fitHeight();
    EXPECT_EQ(panel.yAxis().labelFormat(), QStringLiteral("%.2e"));
}

}  // namespace
