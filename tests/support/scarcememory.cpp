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

// These replace the library's own, all forms except those for special alignments. All are needed: a
// sanitizer with forms of its own would report memory that is freed by another form.

namespace {

void* piece(std::size_t size) noexcept {
    return size <= largestPiece ? std::malloc(size > 0 ? size : 1) : nullptr;
}

void* pieceOrException(std::size_t size) {
    void* const memory = piece(size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

}  // namespace

void* operator new(std::size_t size) {
    return pieceOrException(size);
}
void* operator new[](std::size_t size) {
    return pieceOrException(size);
}
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return piece(size);
}
void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return piece(size);
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete[](void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}
void operator delete(void* memory, const std::nothrow_t& /*tag*/) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, const std::nothrow_t& /*tag*/) noexcept {
    std::free(memory);
}
