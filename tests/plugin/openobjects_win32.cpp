#include "tests/plugin/openobjects.h"

#include <array>
#include <windows.h>

// After windows.h, which it needs; of this version it takes no library of its own.
#define PSAPI_VERSION 2
#include <psapi.h>

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

}  // namespace

OpenObjects OpenObjects::now() {
    DWORD handles = 0;
    GetProcessHandleCount(GetCurrentProcess(), &handles);
    return {.handles = static_cast<int>(handles), .simulatorMaps = countSimulatorViews()};
}
