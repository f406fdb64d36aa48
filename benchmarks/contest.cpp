#include "benchmarks/contest.h"

#include <algorithm>
#include <cmath>
#include <ctime>
#include <utility>

namespace bench {

double percentile(std::vector<double> numbers, double part) {
    if (numbers.empty()) {
        return 0.0;
    }
    std::sort(numbers.begin(), numbers.end());
    const double last = static_cast<double>(numbers.size() - 1);
    return numbers[static_cast<std::size_t>(std::lround(part * last))];
}

double median(std::vector<double> numbers) {
    if (numbers.empty()) {
        return 0.0;
    }
    std::sort(numbers.begin(), numbers.end());
    const std::size_t middle = numbers.size() / 2;
    return numbers.size() % 2 == 1 ? numbers[middle]
                                   : (numbers[middle - 1] + numbers[middle]) / 2.0;
}

double threadSeconds() {
    constexpr double kSecondsPerNanosecond = 1e-9;
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) +
           static_cast<double>(time.tv_nsec) * kSecondsPerNanosecond;
}

void Contest::add(const std::string& name, double units, std::function<void()> work,
                  std::function<void()> prepare) {
    m_contenders.push_back({name, units, std::move(work), std::move(prepare), {}});
}

double Contest::round() {
    const std::size_t count = m_contenders.size();
    for (std::size_t i = 0; i < count; ++i) {
        Contender& contender = m_contenders[(m_rounds + i) % count];
        if (contender.prepare) {
            contender.prepare();
        }
        const double start = threadSeconds();
        contender.work();
        contender.seconds.push_back((threadSeconds() - start) / contender.units);
    }
    ++m_rounds;
    return m_contenders.front().seconds.back() * m_contenders.front().units;
}

const Contest::Contender& Contest::contender(const std::string& name) const {
    return *std::find_if(m_contenders.begin(), m_contenders.end(),
                         [&name](const Contender& contender) { return contender.name == name; });
}

double Contest::seconds(const std::string& name) const {
    return median(contender(name).seconds);
}

double Contest::ratio(const std::string& name, const std::string& reference) const {
    const std::vector<double>& measured = contender(name).seconds;
    const std::vector<double>& base = contender(reference).seconds;
    std::vector<double> ratios(measured.size());
    std::transform(measured.begin(), measured.end(), base.begin(), ratios.begin(),
                   [](double own, double other) { return own / other; });
    return median(ratios);
}

}  // namespace bench
