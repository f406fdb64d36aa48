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

}  // namespace rataip::monitor
