#pragma once

#include <cstdint>

namespace simulator {

/**
 * Repeatable random numbers: a seed gives the same numbers with every compiler and standard
 * library, which the distributions of <random> do not guarantee. Not for cryptography.
 */
class Random {
public:
    explicit Random(std::uint64_t seed) : m_state(seed) {}

    /** 64 random bits. */
    std::uint64_t bits() {
        m_state += 0x9E3779B97F4A7C15U;
        std::uint64_t mixed = m_state;
        mixed = (mixed ^ (mixed >> 30U)) * 0xBF58476D1CE4E5B9U;
        mixed = (mixed ^ (mixed >> 27U)) * 0x94D049BB133111EBU;
        return mixed ^ (mixed >> 31U);
    }

    /** Uniform from 0 (included) to 1 (excluded). */
    double fraction() { return static_cast<double>(bits() >> 11U) * 0x1.0p-53; }

    /** Uniform from `low` to `high`. */
    double between(double low, double high) { return low + (high - low) * fraction(); }

    /** A whole number from 0 to `count` - 1; 0 when `count` is below 1. */
    int below(int count) {
        return count < 1 ? 0 : static_cast<int>(bits() % static_cast<std::uint64_t>(count));
    }

    /** A whole number from `low` to `high`, both included. */
    int whole(int low, int high) { return low + below(high - low + 1); }

    /** Concentrated around 0, from -1 to 1: the mean of three uniform numbers. */
    double bellShaped() { return (between(-1, 1) + between(-1, 1) + between(-1, 1)) / 3.0; }

    /**
     * An independent stream with the number `which`. It depends only on this generator's current
     * state, so that a car keeps its numbers whatever the others draw.
     */
    [[nodiscard]] Random stream(std::uint64_t which) const {
        Random mixed(m_state ^ ((which + 1) * 0xD1342543DE82EF95U));
        return Random(mixed.bits());
    }

private:
    std::uint64_t m_state;
};

}  // namespace simulator
