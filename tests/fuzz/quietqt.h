#pragma once

#include <QtGlobal>

namespace fuzz {

/** Millions of inputs would write millions of lines. */
inline void silenceQt() {
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
}

}  // namespace fuzz
