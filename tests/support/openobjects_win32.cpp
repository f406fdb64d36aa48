#include "tests/support/openobjects.h"

#include <array>
#include <cstdint>
#include <windows.h>

// After windows.h, which it needs; of this version it takes no library of its own.
#define PSAPI_VERSION 2
#include <psapi.h>

namespace testsupport {

namespace {

/**
 * Whether a view has no file behind it and was made for reading alone, as the views of the
 * simulator's block are. Nothing names the object that a view belongs to.
 */
bool isSimulatorView(const MEMORY_BASIC_INFORMATION& region) {
    if (region.Type != MEM_MAPPED || region.AllocationProtect != PAGE_READONLY ||
        region.BaseAddress != region.AllocationBase) {
        return false;
    }
    std::array<wchar_t, MAX_PATH> file{};
    return GetMappedFileNameW(GetCurrentProcess(), region.BaseAddress, file.data(),
                              static_cast<DWORD>(file.size())) == 0;
}

int countSimulatorViews() {
    int views = 0;
    const char* address = nullptr;
    MEMORY_BASIC_INFORMATION region{};
    while (VirtualQuery(address, &region, sizeof region) != 0) {
        views += isSimulatorView(region) ? 1 : 0;
        address = static_cast<const char*>(region.BaseAddress) + region.RegionSize;
    }
    return views;
}

/**
 * The open handles, one by one: they are multiples of four, and those of a test lie low. Wine does
 * not keep the count that the system can be asked for.
 */
int countHandles() {
    constexpr std::uintptr_t kStep = 4;
    constexpr std::uintptr_t kLast = 4096 * kStep;
    int handles = 0;
    for (std::uintptr_t value = kStep; value <= kLast; value += kStep) {
        DWORD flags = 0;
        handles += GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags) != 0 ? 1 : 0;
    }
    return handles;
}

}  // namespace

OpenObjects OpenObjects::now() {
    return {.handles = countHandles(), .simulatorMaps = countSimulatorViews()};
}

}  // namespace testsupport
