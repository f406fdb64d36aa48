#pragma once

#include <new>

namespace irsdk {

/** Runs what takes memory; false, instead of an exception, when there is not enough of it. */
template <typename Allocate>
[[nodiscard]] bool tryAllocate(Allocate allocate) {
    try {
        allocate();
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

}  // namespace irsdk
