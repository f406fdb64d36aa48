#pragma once

#include <cstddef>

namespace torture {

/** What this process holds. */
struct Resources {
    int descriptors = 0;       // open files
    int namedMaps = 0;         // mappings that have a name: libraries, files, shared objects
    std::size_t inUse = 0;     // bytes that were allocated and not given back; see below
    std::size_t resident = 0;  // bytes in memory

    [[nodiscard]] static Resources now();

    /** The address sanitizer has a heap of its own, which the C library knows nothing about. */
#if defined(__SANITIZE_ADDRESS__)
    static constexpr bool knowsMemoryInUse = false;
#else
    static constexpr bool knowsMemoryInUse = true;
#endif
};

}  // namespace torture
