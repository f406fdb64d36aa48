#pragma once

#include "tests/torture/table.h"

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

namespace torture {

/** The resources that this process uses. */
struct Resources {
    int descriptors = 0;       // open files
    int namedMaps = 0;         // mappings that have a name: libraries, files, shared objects
    std::size_t inUse = 0;     // allocated bytes; see below
    std::size_t resident = 0;  // bytes in memory

    [[nodiscard]] static Resources now();

    /** The address sanitizer has a heap of its own, which the C library knows nothing about. */
#if defined(__SANITIZE_ADDRESS__)
    static constexpr bool knowsMemoryInUse = false;
#else
    static constexpr bool knowsMemoryInUse = true;
#endif
};

/** Rows of two measurements: memory in use may grow by 2 MiB, resident memory without limit. */
void addMemoryInUse(Table& table, const std::string& name, const Resources& first,
                    const Resources& last);
void addResidentMemory(Table& table, const std::string& name, const Resources& first,
                       const Resources& last);

/** A row of two counts that must be equal. */
void addEqualCounts(Table& table, const std::string& name, int first, int last);

/** What this process used at comparable moments, and whether that has grown. */
class ResourceLog {
public:
    using Clock = std::chrono::steady_clock;

    /** Memory use is compared with the first measurement after `warmUp`. */
    explicit ResourceLog(Clock::duration warmUp) : m_warmUp(warmUp) {}

    void measure();
    void addTo(Table& table) const;

private:
    struct Entry {
        Clock::time_point at;
        Resources used;
    };

    [[nodiscard]] const Resources& afterWarmUp() const;

    Clock::duration m_warmUp;
    Clock::time_point m_start = Clock::now();
    std::vector<Entry> m_entries;
};

}  // namespace torture
