#include "tools/viewer/trackstrip.h"

#include <gtest/gtest.h>

namespace {

using rataip::viewer::CarState;
using rataip::viewer::TrackStrip;
using Mark = rataip::viewer::TrackStrip::Mark;
using Shape = rataip::viewer::TrackStrip::Shape;

CarState carAt(int slot, double share, bool isOwn = false) {
    CarState car;
    car.info.setCarId(QString::number(slot));
    car.info.setDriverName(QStringLiteral("Driver %1").arg(slot));
    car.info.setStatus(TLM::SDK::CarStatus::FlyingLap);
    car.info.setDetailedTelemetry(isOwn);
    car.share = share;
    return car;
}

const Mark& markOf(const TrackStrip& strip, int slot) {
    for (const Mark& mark : strip.marks()) {
        if (mark.slot == QString::number(slot)) {
            return mark;
        }
    }
    static const Mark kNone;
    return kNone;
}

class Strip : public ::testing::Test {
protected:
    Strip() { strip.resize(1000, strip.sizeHint().height()); }
    TrackStrip strip;
};

TEST_F(Strip, PutsEachCarAtItsDistance) {
    strip.setCars({carAt(0, 0.0), carAt(1, 0.5), carAt(2, 1.0)});
    ASSERT_EQ(strip.marks().size(), 3);
    const double left = markOf(strip, 0).box.center().x();
    const double middle = markOf(strip, 1).box.center().x();
    const double right = markOf(strip, 2).box.center().x();
    EXPECT_NEAR(middle - left, right - middle, 1e-6);
    EXPECT_GT(right - left, 800.0);
    EXPECT_GE(markOf(strip, 0).box.left(), 0.0);
    EXPECT_LE(markOf(strip, 2).box.right(), 1000.0);
}

TEST_F(Strip, MovesACarWithItsShare) {
    strip.setCars({carAt(0, 0.2)});
    const double before = markOf(strip, 0).box.center().x();
    strip.setCars({carAt(0, 0.3)});
    EXPECT_GT(markOf(strip, 0).box.center().x(), before);
}

TEST_F(Strip, MarksTheOwnCarAndCarsInThePitsByShape) {
    CarState inPits = carAt(2, 0.9);
    inPits.info.setStatus(TLM::SDK::CarStatus::InPitStall);
    strip.setCars({carAt(0, 0.5, true), carAt(1, 0.5), inPits});
    EXPECT_EQ(markOf(strip, 0).shape, Shape::Diamond);
    EXPECT_EQ(markOf(strip, 1).shape, Shape::Disc);
    EXPECT_EQ(markOf(strip, 2).shape, Shape::Square);
    EXPECT_EQ(strip.marks().constLast().slot, QStringLiteral("0")) << "drawn on top of the others";
}

TEST_F(Strip, KeepsTheOwnCarsShapeInThePits) {
    CarState own = carAt(0, 0.9, true);
    own.info.setStatus(TLM::SDK::CarStatus::InPitlane);
    strip.setCars({own, carAt(1, 0.5)});
    EXPECT_EQ(markOf(strip, 0).shape, Shape::Diamond);
    EXPECT_GT(markOf(strip, 0).box.center().y(), markOf(strip, 1).box.center().y())
        << "below the line";
}

TEST_F(Strip, NumbersTheCarsInThePitsBelowTheLine) {
    CarState inPits = carAt(2, 0.9);
    inPits.info.setStatus(TLM::SDK::CarStatus::InPitStall);
    strip.setCars({inPits, carAt(1, 0.9)});
    EXPECT_GT(markOf(strip, 2).label.top(), markOf(strip, 2).box.center().y());
    EXPECT_LT(markOf(strip, 1).label.bottom(), markOf(strip, 1).box.center().y());
    EXPECT_TRUE(QRectF(strip.rect()).contains(markOf(strip, 2).label));
}

TEST_F(Strip, ShowsNoCarThatIsNotInTheWorld) {
    CarState gone = carAt(0, 0.5);
    gone.share.reset();
    strip.setCars({gone});
    EXPECT_TRUE(strip.marks().isEmpty());
    EXPECT_FALSE(strip.grab().isNull());
}

TEST_F(Strip, AvoidsOverlappingNumbersAndKeepsTheOwnCars) {
    QList<CarState> cars;
    for (int slot = 0; slot < 64; ++slot) {
        cars.append(carAt(slot, 0.5 + 0.001 * slot, slot == 40));
    }
    strip.setCars(cars);
    EXPECT_EQ(strip.marks().size(), 64);
    EXPECT_FALSE(markOf(strip, 40).label.isEmpty());
    for (qsizetype i = 0; i < strip.marks().size(); ++i) {
        for (qsizetype j = 0; j < i; ++j) {
            EXPECT_FALSE(strip.marks().at(i).label.intersects(strip.marks().at(j).label));
        }
    }
}

TEST_F(Strip, KeepsItsNumbersInsideTheStrip) {
    QList<CarState> cars;
    for (int slot = 0; slot < 64; ++slot) {
        cars.append(carAt(slot, slot / 63.0));
    }
    strip.setCars(cars);
    for (const Mark& mark : strip.marks()) {
        if (!mark.label.isEmpty()) {
            EXPECT_TRUE(QRectF(strip.rect()).contains(mark.label)) << mark.slot.toStdString();
        }
    }
}

}  // namespace
