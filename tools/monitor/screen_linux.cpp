#include "tools/monitor/screen.h"

#include <QByteArray>
#include <QtGlobal>

namespace rataip::monitor {

void doWithoutScreen() {
    constexpr char platform[] = "QT_QPA_PLATFORM";
    if (!qEnvironmentVariableIsSet(platform)) {
        qputenv(platform, QByteArrayLiteral("offscreen"));
    }
}

}  // namespace rataip::monitor
