#include "tools/monitor/terminal.h"

#include <cstdio>
#include <io.h>
#include <windows.h>

namespace rataip::monitor {

void prepareStandardOutput() {
    SetConsoleOutputCP(CP_UTF8);
}

bool isStandardOutputTerminal() {
    return _isatty(_fileno(stdout)) != 0;
}

// Every session has a screen, and the platform plugin that is usually installed draws on it.
void doWithoutScreen() {}

}  // namespace rataip::monitor
