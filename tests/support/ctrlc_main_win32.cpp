#include <cstdlib>
#include <windows.h>

namespace {

BOOL WINAPI ignore(DWORD /*event*/) {
    return TRUE;
}

}  // namespace

/** Sends Ctrl-C to the console of the process whose id is the argument. */
int main(int argc, char* argv[]) {
    if (argc != 2 || AttachConsole(static_cast<DWORD>(std::strtoul(argv[1], nullptr, 10))) == 0 ||
        SetConsoleCtrlHandler(ignore, TRUE) == 0 ||
        GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0) == 0) {
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
