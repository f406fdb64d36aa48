#include "tools/lapimage/colours.h"

namespace rataip::lapimage {

namespace {

constexpr QRgb kBlue = qRgb(0, 114, 178);
constexpr QRgb kSkyBlue = qRgb(86, 180, 233);
constexpr QRgb kVermilion = qRgb(213, 94, 0);
constexpr QRgb kOrange = qRgb(230, 159, 0);
constexpr QRgb kYellow = qRgb(240, 228, 66);
constexpr QRgb kBlack = qRgb(0, 0, 0);

constexpr int kMiddleLightness = 128;

}  // namespace

QColor colour(Role role, bool isGroundDark) {
    switch (role) {
        case Role::OtherCar:
        case Role::ThisLap:
        case Role::Throttle:
        case Role::Good:
            return QColor(isGroundDark ? kSkyBlue : kBlue);
        case Role::OwnCar:
        case Role::OtherLap:
        case Role::Brake:
        case Role::Bad:
            return QColor(isGroundDark ? kOrange : kVermilion);
        case Role::CarInPits:
            return QColor(isGroundDark ? kYellow : kBlack);
    }
    return {};
}

bool isDark(const QColor& ground) {
    return ground.lightness() < kMiddleLightness;
}

}  // namespace rataip::lapimage
