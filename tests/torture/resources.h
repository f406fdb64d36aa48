#pragma once

#include <cstddef>

namespace torture {

/** What this process holds. */
struct Resources {
    int descriptors = 0;       // open files
    int namedMaps = 0;         // mappings that have a name: libraries, files, shared objects
    std::size_t inUse = 0;     // bytes that were allocated and not given back
    std::size_t resident = 0;  // bytes in memory

    [[nodiscard]] static Resources now();
};

}  // namespace torture
