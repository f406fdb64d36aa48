#include "benchmarks/allocations.h"

#include <cstddef>
#include <cstdlib>
#include <malloc.h>

// The C library's own entry points, which it offers to programs that replace malloc.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
}

namespace {

constinit thread_local std::uint64_t allocations = 0;

}  // namespace

std::uint64_t bench::allocationCount() {
    return allocations;
}

void bench::keepFreedMemory() {
    constexpr int kNoLimit = 1 << 30;  // bytes
    mallopt(M_TRIM_THRESHOLD, kNoLimit);
    mallopt(M_MMAP_MAX, 0);
}

void bench::giveBackFreedMemory() {
    malloc_trim(0);
}

void bench::mergeFreedMemory() {
    constexpr std::size_t kLargePiece = 1 << 20;  // bytes
    std::free(std::malloc(kLargePiece));
}

// operator new and Qt's containers allocate through these. Freeing is not counted.
extern "C" {

[[gnu::visibility("default")]] void* malloc(std::size_t size) noexcept {
    ++allocations;
    return __libc_malloc(size);
}

[[gnu::visibility("default")]] void* calloc(std::size_t count, std::size_t size) noexcept {
    ++allocations;
    return __libc_calloc(count, size);
}

[[gnu::visibility("default")]] void* realloc(void* memory, std::size_t size) noexcept {
    ++allocations;
    return __libc_realloc(memory, size);
}

[[gnu::visibility("default")]] void* aligned_alloc(std::size_t alignment,
                                                   std::size_t size) noexcept {
    ++allocations;
    return __libc_memalign(alignment, size);
}

}  // extern "C"
