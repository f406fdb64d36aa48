#pragma once

#include <QColor>

namespace rataip::lapimage {

/** What a colour stands for, the same in every window and picture. */
enum class Role {
    OwnCar,
    OtherCar,
    CarInPits,
    ThisLap,   // the lap looked at, the lap being driven
    OtherLap,  // the lap that it is compared with
    Throttle,
    Brake,
    Good,  // data arrives
    Bad,   // something is missing
};

/**
 * The colour of a role on a light or a dark ground.
 *
 * All of them come from a set of eight that people with any of the usual kinds of colour blindness
 * tell apart (blue, vermilion, orange, sky blue, ...), and no two roles that stand side by side
 * differ by red and green alone. Colour never is the only difference: lines are dashed, marks have
 * shapes, lamps have words.
 */
[[nodiscard]] QColor colour(Role role, bool isGroundDark);

/** Whether a ground of this colour counts as dark. */
[[nodiscard]] bool isDark(const QColor& ground);

}  // namespace rataip::lapimage
