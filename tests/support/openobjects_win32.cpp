#include "tests/support/openobjects.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <windows.h>

// After windows.h, which they need; of this version the second takes no library of its own.
#define PSAPI_VERSION 2
#include <psapi.h>
#include <winternl.h>

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

/** A text that the system knows of a handle's object; empty where there is none. */
std::wstring_view textOf(HANDLE handle, OBJECT_INFORMATION_CLASS kind, std::span<std::byte> room) {
    ULONG length = 0;
    if (NtQueryObject(handle, kind, room.data(), static_cast<ULONG>(room.size()), &length) < 0) {
        return {};
    }
    // Each kind of answer begins with the text.
    const auto* text = reinterpret_cast<const UNICODE_STRING*>(room.data());
    return {text->Buffer, text->Length / sizeof(wchar_t)};
}

/**
 * Whether a handle leads to the block or the data-valid event. Only objects of their types are
 * asked for a name: the question may wait for ever at a pipe.
 */
bool isSimulatorHandle(HANDLE handle) {
    constexpr auto kName = static_cast<OBJECT_INFORMATION_CLASS>(1);
    constexpr std::size_t kRoom = 4096;
    alignas(UNICODE_STRING) std::array<std::byte, kRoom> room{};
    const std::wstring_view type = textOf(handle, ObjectTypeInformation, room);
    return (type == L"Section" || type == L"Event") &&
           textOf(handle, kName, room).find(L"\\IRSDK") != std::wstring_view::npos;
}

/**
 * Handles are multiples of four, and those of a test lie low. Only the simulator's are counted: the
 * system opens others for itself, a timer's thread for one, and closes them when it likes.
 */
int countHandles() {
    constexpr std::uintptr_t kStep = 4;
    constexpr std::uintptr_t kLast = 4096 * kStep;
    int handles = 0;
    for (std::uintptr_t value = kStep; value <= kLast; value += kStep) {
        const auto handle = reinterpret_cast<HANDLE>(value);
        DWORD flags = 0;
        const bool isOpen = GetHandleInformation(handle, &flags) != 0;
        handles += isOpen && isSimulatorHandle(handle) ? 1 : 0;
    }
    return handles;
}

}  // namespace

OpenObjects OpenObjects::now() {
    return {.handles = countHandles(), .simulatorMaps = countSimulatorViews()};
}

}  // namespace testsupport
