#pragma once

#include <cstddef>
#include <limits>

namespace testsupport {

/**
 * Lets allocations fail from a chosen one on: while it exists, the allocations within during() are
 * counted, those of operator new and of malloc. One at a time, on one thread, on Linux. The program
 * MUST be linked with scarcememory.cpp, whose operators call malloc.
 */
class MemoryShortage {
public:
    enum class Kind {
        OnePiece,   // only the chosen allocation fails
        Everything  // all later ones fail too
    };

    /** As `firstPiece`: no allocation fails, they are only counted. */
    static constexpr std::size_t kNever = std::numeric_limits<std::size_t>::max();

    MemoryShortage(Kind kind, std::size_t firstPiece);
    ~MemoryShortage();
    MemoryShortage(const MemoryShortage&) = delete;
    MemoryShortage& operator=(const MemoryShortage&) = delete;

    template <typename Call>
    void during(Call call) {
        count(true);
        call();
        count(false);
    }

    /** The number of allocations so far. */
    [[nodiscard]] std::size_t pieces() const;

private:
    static void count(bool on);
};

}  // namespace testsupport
