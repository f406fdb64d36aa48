#include "tests/support/scarcememory.h"

#include <atomic>
#include <cstdlib>
#include <limits>
#include <new>

namespace {

constexpr std::size_t kNoLimit = std::numeric_limits<std::size_t>::max();

constinit std::atomic<std::size_t> largestPiece{kNoLimit};

}  // namespace

namespace testsupport {

ScarceMemory::ScarceMemory(std::size_t largest) {
    largestPiece = largest;
}

ScarceMemory::~ScarceMemory() {
    largestPiece = kNoLimit;
}

}  // namespace testsupport

// In the place of the library's own; its other forms of new and delete end here as well.

void* operator new(std::size_t size) {
    void* const memory = size <= largestPiece ? std::malloc(size > 0 ? size : 1) : nullptr;
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}
