#pragma once

#include <cstddef>

namespace testsupport {

/**
 * While one exists, the whole program gets no piece of memory of more than `largest` bytes from
 * operator new. One at a time.
 */
class ScarceMemory {
public:
    explicit ScarceMemory(std::size_t largest);
    ~ScarceMemory();
    ScarceMemory(const ScarceMemory&) = delete;
    ScarceMemory& operator=(const ScarceMemory&) = delete;
};

}  // namespace testsupport
