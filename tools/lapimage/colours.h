#pragma once

#include <QColor>

namespace rataip::lapimage {

/** What a colour stands for in all windows and pictures. */
enum class Role {
    OwnCar,
    OtherCar,
    CarInPits,
    ThisLap,   // the lap shown, or being driven
    OtherLap,  // the lap it is compared with
    Throttle,
    Brake,
    Good,  // data arrives
    Bad,   // something is missing
};

/**
 * The colour of a role on a light or a dark ground.
 *
 * All colours come from a set of eight that people with any of the common kinds of colour blindness
 * can distinguish (blue, vermilion, orange, sky blue, ...). Adjacent roles never differ only by red
 * and green. Colour is never the only difference: lines are dashed, marks have shapes, lamps have
 * texts.
 */
[[nodiscard]] QColor colour(Role role, bool isGroundDark);

/** Whether a ground of this colour counts as dark. */
[[nodiscard]] bool isDark(const QColor& ground);

}  // namespace rataip::lapimage
