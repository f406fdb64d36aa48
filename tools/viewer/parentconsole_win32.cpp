#include "tools/viewer/parentconsole.h"

#include <cstdio>
#include <windows.h>

namespace rataip::viewer {

namespace {

bool isRedirected(DWORD stream) {
    const HANDLE handle = GetStdHandle(stream);
    return handle != nullptr && handle != INVALID_HANDLE_VALUE &&
           GetFileType(handle) != FILE_TYPE_UNKNOWN;
}

void sendToConsole(FILE* stream) {
    FILE* reopened = nullptr;
    // If this fails, the stream still leads nowhere, as before.
    static_cast<void>(freopen_s(&reopened, "CONOUT$", "w", stream));
}

}  // namespace

void useParentConsole() {
    // Asked first, because attaching a console creates new handles.
    const bool isOutRedirected = isRedirected(STD_OUTPUT_HANDLE);
    const bool isErrorRedirected = isRedirected(STD_ERROR_HANDLE);
    if (AttachConsole(ATTACH_PARENT_PROCESS) == FALSE) {
        return;  // started by its icon, not from a console
    }
    SetConsoleOutputCP(CP_UTF8);
    if (!isOutRedirected) {
        sendToConsole(stdout);
    }
    if (!isErrorRedirected) {
        sendToConsole(stderr);
    }
}

}  // namespace rataip::viewer
