#include "tools/lapimage/colours.h"

namespace rataip::lapimage {

namespace {

constexpr QRgb blue = qRgb(0, 114, 178);
constexpr QRgb skyBlue = qRgb(86, 180, 233);
constexpr QRgb vermilion = qRgb(213, 94, 0);
constexpr QRgb orange = qRgb(230, 159, 0);
constexpr QRgb yellow = qRgb(240, 228, 66);
constexpr QRgb black = qRgb(0, 0, 0);

constexpr int middleLightness = 128;

}  // namespace

QColor colour(Role role, bool isGroundDark) {
    switch (role) {
        case Role::OtherCar:
        case Role::ThisLap:
        case Role::Throttle:
        case Role::Good:
            return QColor(isGroundDark ? skyBlue : blue);
        case Role::OwnCar:
        case Role::OtherLap:
        case Role::Brake:
        case Role::Bad:
            return QColor(isGroundDark ? orange : vermilion);
        case Role::CarInPits:
            return QColor(isGroundDark ? yellow : black);
    }
    return {};
}

bool isDark(const QColor& ground) {
    return ground.lightness() < middleLightness;
}

}  // namespace rataip::lapimage
