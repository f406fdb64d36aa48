#pragma once

#include <functional>
#include <string>
#include <vector>

namespace bench {

/** The middle of some numbers; the mean of the middle two of an even number. 0 of none. */
[[nodiscard]] double median(std::vector<double> numbers);

/** The number below which `part` (0 to 1) of the numbers lie. 0 of none. */
[[nodiscard]] double percentile(std::vector<double> numbers, double part);

/** Seconds of processor time that some work takes. */
[[nodiscard]] double secondsOf(const std::function<void()>& work);

/**
 * Several ways to do the same work, taking turns. In each round everybody has a turn, and another
 * one begins, so that a slow moment of the machine meets all alike; ratios are formed within a
 * round and the median of the rounds counts.
 */
class Contest {
public:
    /**
     * `work` does its work `units` times, and times are given for one; `prepare` is called before
     * each turn and not timed.
     */
    void add(const std::string& name, double units, std::function<void()> work,
             std::function<void()> prepare = {});

    /** A turn for everybody; the seconds of the first one's turn. */
    double round();

    /** Median seconds of one unit. */
    [[nodiscard]] double seconds(const std::string& name) const;

    /** Median over the rounds of the time of `name` by the time of `reference`. */
    [[nodiscard]] double ratio(const std::string& name, const std::string& reference) const;

private:
    struct Contender {
        std::string name;
        double units;
        std::function<void()> work;
        std::function<void()> prepare;
        std::vector<double> seconds;
    };

    [[nodiscard]] const Contender& contender(const std::string& name) const;

    std::vector<Contender> m_contenders;
    std::size_t m_rounds = 0;
};

}  // namespace bench
