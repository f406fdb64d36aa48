#include "tests/support/checkedsnapshot.h"

#include <cstring>

namespace testsupport {

namespace {

constexpr std::size_t kWord = sizeof(std::uint32_t);
constexpr std::uint32_t kSpread = 2654435761U;  // neighbouring words differ in all bytes

std::uint32_t wordOf(std::uint32_t tickCount, std::size_t index) {
    return tickCount + static_cast<std::uint32_t>(index) * kSpread;
}

}  // namespace

void fillChecked(char* snapshot, std::size_t length, std::int32_t tickCount) {
    for (std::size_t i = 0; i < length / kWord; ++i) {
        const std::uint32_t word = wordOf(static_cast<std::uint32_t>(tickCount), i);
        std::memcpy(snapshot + i * kWord, &word, kWord);
    }
}

bool isUntorn(const char* snapshot, std::size_t length) {
    const auto tickCount = static_cast<std::uint32_t>(checkedTick(snapshot));
    for (std::size_t i = 0; i < length / kWord; ++i) {
        const std::uint32_t expected = wordOf(tickCount, i);
        if (std::memcmp(snapshot + i * kWord, &expected, kWord) != 0) {
            return false;
        }
    }
    return true;
}

std::int32_t checkedTick(const char* snapshot) {
    std::int32_t tickCount = 0;
    std::memcpy(&tickCount, snapshot, sizeof tickCount);
    return tickCount;
}

}  // namespace testsupport
