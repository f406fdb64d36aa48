#pragma once

#include "tests/torture/resources.h"
#include "tests/torture/table.h"

#include <chrono>
#include <vector>

namespace torture {

/** What this process held at moments that can be compared, and whether it came to hold more. */
class ResourceBook {
public:
    using Clock = std::chrono::steady_clock;

    /** Memory counts as settled so long after the book was opened. */
    explicit ResourceBook(Clock::duration settlingTime) : m_settlingTime(settlingTime) {}

    void measure();
    void addTo(Table& table) const;

private:
    struct Entry {
        Clock::time_point at;
        Resources held;
    };

    [[nodiscard]] const Resources& settled() const;

    Clock::duration m_settlingTime;
    Clock::time_point m_start = Clock::now();
    std::vector<Entry> m_entries;
};

}  // namespace torture
