#pragma once

#include <functional>
#include <string>
#include <vector>

namespace bench {

/** 0 for no numbers. */
[[nodiscard]] double median(std::vector<double> numbers);

/** The number below which `part` (0 to 1) of the numbers lie. 0 for no numbers. */
[[nodiscard]] double percentile(std::vector<double> numbers, double part);

/**
 * Seconds of processor time that this thread has used, in user and system mode. Other programs do
 * not count, so that a busy machine changes the result less. No measured work sleeps.
 */
[[nodiscard]] double threadSeconds();

/**
 * Several ways to do the same work, taking turns. Each of them has a turn in each round, and
 * another one goes first each time, so that a slow moment of the machine affects all of them
 * equally. Ratios are taken within a round, and the median of the rounds counts.
 */
class Contest {
public:
    /**
     * `work` does its work `units` times, and results are for one unit; `prepare` is called before
     * each turn and not timed.
     */
    void add(const std::string& name, double units, std::function<void()> work,
             std::function<void()> prepare = {});

    /** One turn for each; returns the seconds of the first one's turn. */
    double round();

    /** Median seconds of one unit. */
    [[nodiscard]] double seconds(const std::string& name) const;

    /** Median over the rounds of the time of `name` divided by the time of `reference`. */
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
