#pragma once

#include <ostream>

namespace testsupport {

/**
 * What this process holds open, to see that a link that was closed left nothing behind. Two of
 * these are equal when as much is open.
 */
struct OpenObjects {
    int handles = 0;        // file descriptors, or handles of the simulator's named objects
    int simulatorMaps = 0;  // mappings of the simulator's named objects

    [[nodiscard]] static OpenObjects now();

    friend bool operator==(const OpenObjects&, const OpenObjects&) = default;
    friend std::ostream& operator<<(std::ostream& out, const OpenObjects& objects) {
        return out << objects.handles << " handles, " << objects.simulatorMaps
                   << " mappings of the simulator's objects";
    }
};

}  // namespace testsupport
