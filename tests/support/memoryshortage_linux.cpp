#include "tests/support/memoryshortage.h"

#include <dlfcn.h>
#include <limits>

namespace {

constexpr std::size_t kNever = testsupport::MemoryShortage::kNever;

std::size_t firstRefused = kNever;
std::size_t lastRefused = kNever;
std::size_t asked = 0;
bool counting = false;

bool isRefused() {
    return counting && ++asked >= firstRefused && asked <= lastRefused;
}

template <typename Function>
Function next(const char* name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

}  // namespace

// These replace the functions of the C library, or of the sanitizer.
extern "C" void* malloc(std::size_t size) {
    static const auto kOriginal = next<void* (*)(std::size_t)>("malloc");
    return isRefused() ? nullptr : kOriginal(size);
}

extern "C" void* realloc(void* memory, std::size_t size) {
    static const auto kOriginal = next<void* (*)(void*, std::size_t)>("realloc");
    return isRefused() ? nullptr : kOriginal(memory, size);
}

namespace testsupport {

MemoryShortage::MemoryShortage(Kind kind, std::size_t firstPiece) {
    asked = 0;
    firstRefused = firstPiece;
    lastRefused = kind == Kind::OnePiece ? firstPiece : kNever;
}

MemoryShortage::~MemoryShortage() {
    counting = false;
    firstRefused = kNever;
}

std::size_t MemoryShortage::pieces() const {
    return asked;
}

void MemoryShortage::count(bool on) {
    counting = on;
}

}  // namespace testsupport
