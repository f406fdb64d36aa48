#include "benchmarks/threadclock.h"

#include <ctime>

double bench::threadSeconds() {
    constexpr double secondsPerNanosecond = 1e-9;
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) +
           static_cast<double>(time.tv_nsec) * secondsPerNanosecond;
}
