#include "tools/lapimage/colours.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace {

using rataip::lapimage::colour;
using rataip::lapimage::isDark;
using rataip::lapimage::Role;

double linear(double channel) {
    return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

/** Relative luminance, 0 black to 1 white. */
double luminance(const QColor& colour) {
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) +
           0.0722 * linear(colour.blueF());
}

double contrast(const QColor& left, const QColor& right) {
    const double a = luminance(left) + 0.05;
    const double b = luminance(right) + 0.05;
    return std::max(a, b) / std::min(a, b);
}

struct Eye {
    const char* name;
    // Rows of a matrix over linear red, green and blue.
    std::array<std::array<double, 3>, 3> sees;
};

/** Complete lack of one kind of cone, as linear-light simulations model it. */
constexpr std::array<Eye, 3> kEyes = {
    {{"without red", {{{0.152, 1.053, -0.205}, {0.115, 0.786, 0.099}, {-0.004, -0.048, 1.052}}}},
     {"without green", {{{0.367, 0.861, -0.228}, {0.280, 0.673, 0.047}, {-0.012, 0.043, 0.969}}}},
     {"without blue", {{{1.256, -0.077, -0.179}, {-0.078, 0.931, 0.148}, {0.005, 0.691, 0.304}}}}}};

double distanceFor(const Eye& eye, const QColor& left, const QColor& right) {
    const std::array<double, 3> difference = {linear(left.redF()) - linear(right.redF()),
                                              linear(left.greenF()) - linear(right.greenF()),
                                              linear(left.blueF()) - linear(right.blueF())};
    double sum = 0.0;
    for (const auto& row : eye.sees) {
        const double seen =
            row[0] * difference[0] + row[1] * difference[1] + row[2] * difference[2];
        sum += seen * seen;
    }
    return std::sqrt(sum);
}

TEST(Colours, OfAdjacentRolesDifferForEveryEye) {
    constexpr std::array<std::pair<Role, Role>, 5> kSideBySide = {
        {{Role::ThisLap, Role::OtherLap},
         {Role::Throttle, Role::Brake},
         {Role::OwnCar, Role::OtherCar},
         {Role::OtherCar, Role::CarInPits},
         {Role::Good, Role::Bad}}};
    constexpr double kClearly = 0.2;
    for (const bool isGroundDark : {false, true}) {
        for (const auto& [left, right] : kSideBySide) {
            for (const Eye& eye : kEyes) {
                EXPECT_GT(distanceFor(eye, colour(left, isGroundDark), colour(right, isGroundDark)),
                          kClearly)
                    << eye.name << " " << static_cast<int>(left);
            }
        }
    }
}

TEST(Colours, StandOutFromTheirBackground) {
    constexpr double kEnoughForLines = 2.5;
    for (int role = 0; role <= static_cast<int>(Role::Bad); ++role) {
        EXPECT_GT(contrast(colour(static_cast<Role>(role), false), Qt::white), kEnoughForLines);
        EXPECT_GT(contrast(colour(static_cast<Role>(role), true), QColor(45, 45, 45)),
                  kEnoughForLines);
    }
}

TEST(Colours, DistinguishDarkFromLightBackgrounds) {
    EXPECT_TRUE(isDark(Qt::black));
    EXPECT_TRUE(isDark(QColor(53, 53, 53)));
    EXPECT_FALSE(isDark(Qt::white));
    EXPECT_FALSE(isDark(QColor(239, 239, 239)));
}

}  // namespace
