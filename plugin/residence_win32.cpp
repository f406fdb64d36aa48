#include <windows.h>

namespace {

/**
 * Keeps this library in the process until the process ends, whatever a host unloads: the types that
 * are registered with Qt and the laps that a host keeps point into it. A library for Linux is
 * linked so that it stays.
 */
bool stayLoaded() {
    HMODULE library = nullptr;
    return GetModuleHandleExW(
               GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
               reinterpret_cast<LPCWSTR>(&stayLoaded), &library) != 0;
}

[[maybe_unused]] const bool isResident = stayLoaded();

}  // namespace
