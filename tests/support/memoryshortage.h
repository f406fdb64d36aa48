#pragma once

#include <cstddef>
#include <limits>

namespace testsupport {

/**
 * A want of memory that comes at a chosen moment: while one exists, pieces of memory that the
 * program asks for within during() are counted, and from the chosen one on it gets none, of
 * operator new as of malloc. One at a time, on one thread, on Linux. The program MUST be linked
 * with scarcememory.cpp, whose operators take their memory from malloc.
 */
class MemoryShortage {
public:
    enum class Kind {
        OnePiece,   // memory is there again for the next piece
        Everything  // there is none any more
    };

    /** The piece that never comes: nothing is wanting, and pieces are counted. */
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

    /** The pieces that were asked for so far. */
    [[nodiscard]] std::size_t pieces() const;

private:
    static void count(bool on);
};

}  // namespace testsupport
