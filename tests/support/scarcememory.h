#pragma once

#include <cstddef>

namespace testsupport {

/** While one exists, operator new fails for more than `largest` bytes. One at a time. */
class ScarceMemory {
public:
    explicit ScarceMemory(std::size_t largest);
    ~ScarceMemory();
    ScarceMemory(const ScarceMemory&) = delete;
    ScarceMemory& operator=(const ScarceMemory&) = delete;
};

}  // namespace testsupport
