#include "tools/monitor/terminal.h"

#include <QByteArray>
#include <QtGlobal>

#include <csignal>
#include <unistd.h>

namespace rataip::monitor {

void prepareStandardOutput() {
    std::signal(SIGPIPE, SIG_IGN);
}

bool isStandardOutputTerminal() {
    return isatty(STDOUT_FILENO) == 1;
}

void doWithoutScreen() {
    constexpr char kPlatform[] = "QT_QPA_PLATFORM";
    if (!qEnvironmentVariableIsSet(kPlatform)) {
        qputenv(kPlatform, QByteArrayLiteral("offscreen"));
    }
}

}  // namespace rataip::monitor
