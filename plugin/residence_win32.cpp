#include <windows.h>

namespace {

/**
 * Keeps this library loaded until the process ends, even if a host unloads it: types registered
 * with Qt and laps that a host keeps point into it. On Linux a linker option does the same.
 */
bool stayLoaded() {
    HMODULE library = nullptr;
    return GetModuleHandleExW(
               GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
               reinterpret_cast<LPCWSTR>(&stayLoaded), &library) != 0;
}

[[maybe_unused]] const bool kIsResident = stayLoaded();

}  // namespace
