#include "tools/lapimage/lappicture.h"

#include "tests/tools/laps/samplelap.h"

#include <QBuffer>
#include <QFontMetricsF>
#include <QImage>

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using rataip::lapimage::LapPicture;
using TLM::SDK::Lap;

constexpr QSize kSheet(1280, 800);

bool hasText(const LapPicture& picture, const QString& text) {
    return std::any_of(picture.texts().cbegin(), picture.texts().cend(),
                       [&text](const LapPicture::Text& item) { return item.text == text; });
}

bool hasTextWith(const LapPicture& picture, const QString& part) {
    return std::any_of(picture.texts().cbegin(), picture.texts().cend(),
                       [&part](const LapPicture::Text& item) { return item.text.contains(part); });
}

TEST(LapPicture, PlotsTheLapsOwnReadings) {
    const auto lap = ownLap();
    const LapPicture picture(*lap, kSheet);
    ASSERT_EQ(picture.panels().size(), 3);
    const QList<double> distance = lap->channel(QStringLiteral("lapdist"))->samples;
    int curves = 0;
    for (const LapPicture::Panel& panel : picture.panels()) {
        for (const LapPicture::Curve& curve : panel.curves) {
            ++curves;
            const auto channel = lap->channel(curve.channel);
            ASSERT_EQ(curve.points.size(), channel->samples.size());
            ASSERT_EQ(curve.line.size(), channel->samples.size());
            for (qsizetype i = 0; i < curve.points.size(); ++i) {
                EXPECT_EQ(curve.points.at(i).x(), distance.at(i));
                EXPECT_EQ(curve.points.at(i).y(), channel->sample(i) * curve.factor);
            }
        }
    }
    EXPECT_EQ(curves, 4) << "speed, throttle, brake, gear";
}

TEST(LapPicture, DrawsHigherReadingsHigherAndLaterOnesFurtherRight) {
    const LapPicture picture(*ownLap(), kSheet);
    for (const LapPicture::Panel& panel : picture.panels()) {
        for (const LapPicture::Curve& curve : panel.curves) {
            for (qsizetype i = 1; i < curve.points.size(); ++i) {
                EXPECT_GT(curve.line.at(i).x(), curve.line.at(i - 1).x());
                EXPECT_EQ(curve.points.at(i).y() > curve.points.at(i - 1).y(),
                          curve.line.at(i).y() < curve.line.at(i - 1).y());
            }
            EXPECT_TRUE(
                panel.area.adjusted(-0.5, -0.5, 0.5, 0.5).contains(curve.line.boundingRect()));
        }
    }
}

TEST(LapPicture, SaysWhatIsPlottedWithItsUnits) {
    const LapPicture picture(*ownLap(), kSheet);
    for (const char* text : {"Speed (km/h)", "Pedals (%)", "Gear", "Distance (m)", "Throttle",
                             "Brake (dashed)", "Ada Berg  ·  lap 4  ·  1:34.512"}) {
        EXPECT_TRUE(hasText(picture, QString::fromUtf8(text))) << text;
    }
    EXPECT_TRUE(hasTextWith(picture, QStringLiteral("Grand Circuit")));
    EXPECT_TRUE(hasTextWith(picture, QStringLiteral("flying lap")));
}

TEST(LapPicture, ShowsAllTextsInFullAndApart) {
    for (const auto& lap : {ownLap(), otherLap()}) {
        const LapPicture picture(*lap, kSheet);
        const QRectF whole(QPointF(0.0, 0.0), QSizeF(picture.size()));
        for (qsizetype i = 0; i < picture.texts().size(); ++i) {
            const LapPicture::Text& text = picture.texts().at(i);
            const QFontMetricsF metrics(text.font);
            const double along = text.isUpright ? text.box.height() : text.box.width();
            const double across = text.isUpright ? text.box.width() : text.box.height();
            EXPECT_LE(metrics.horizontalAdvance(text.text), along) << text.text.toStdString();
            EXPECT_LE(metrics.height(), across) << text.text.toStdString();
            EXPECT_FALSE(text.text.contains(QChar(0x2026))) << text.text.toStdString();
            EXPECT_TRUE(whole.contains(text.box)) << text.text.toStdString();
            for (qsizetype j = 0; j < i; ++j) {
                EXPECT_FALSE(text.box.adjusted(1, 1, -1, -1).intersects(picture.texts().at(j).box))
                    << text.text.toStdString() << " / " << picture.texts().at(j).text.toStdString();
            }
        }
    }
}

TEST(LapPicture, ShortensNamesThatAreLongerThanTheSheet) {
    const auto lap = ownLap();
    lap->setDriverName(QString(500, QLatin1Char('W')));
    const LapPicture picture(*lap, kSheet);
    EXPECT_TRUE(picture.texts().constFirst().text.endsWith(QChar(0x2026)));
}

TEST(LapPicture, SaysWhatIsNotKnownOfAnotherCar) {
    const LapPicture picture(*otherLap(), kSheet);
    EXPECT_TRUE(hasText(picture, QStringLiteral("Pedals: not recorded in this lap")));
    EXPECT_EQ(picture.panels().at(1).curves.size(), 0);
    EXPECT_EQ(picture.panels().at(0).curves.size(), 1);
}

TEST(LapPicture, HasOnlyTextsForALapWithoutDistance) {
    Lap lap;
    lap.addChannel(channelWith({1.0, 2.0}), QStringLiteral("speed"));
    const LapPicture picture(lap, kSheet);
    for (const LapPicture::Panel& panel : picture.panels()) {
        EXPECT_TRUE(panel.curves.isEmpty());
    }
    EXPECT_FALSE(picture.image().isNull());
}

TEST(LapPicture, DrawsALapOfOneSample) {
    const LapPicture picture(*ownLap(1, 1), kSheet);
    EXPECT_FALSE(picture.image().isNull());
}

TEST(LapPicture, HasMorePixelsAtALargerScale) {
    const LapPicture picture(*ownLap(), kSheet);
    EXPECT_EQ(picture.image(1.0).size(), kSheet);
    EXPECT_EQ(picture.image(2.0).size(), 2 * kSheet);
}

TEST(LapPicture, ShowsTheCurvesInTheirColours) {
    const LapPicture picture(*ownLap(), kSheet);
    const QImage image = picture.image(2.0);
    for (const LapPicture::Panel& panel : picture.panels()) {
        for (const LapPicture::Curve& curve : panel.curves) {
            const QRgb wanted = rataip::lapimage::colour(curve.role, false).rgb();
            qsizetype found = 0;
            for (const QPointF& point : curve.line) {
                found += image.pixel((point * 2.0).toPoint()) == wanted ? 1 : 0;
            }
            EXPECT_GT(found, curve.line.size() / 5) << curve.channel.toStdString();
        }
    }
}

TEST(PngFormat, WritesAPictureThatReadsBack) {
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    const rataip::laps::LapFormat format = rataip::lapimage::pngFormat();
    EXPECT_EQ(format.suffix, QStringLiteral("png"));
    ASSERT_TRUE(format.write(*ownLap(), buffer));
    QImage image;
    ASSERT_TRUE(image.loadFromData(buffer.data(), "PNG"));
    EXPECT_EQ(image.size(), kSheet);
}

}  // namespace
