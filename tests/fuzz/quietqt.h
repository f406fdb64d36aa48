#pragma once

#include <QtGlobal>

namespace fuzz {

/** Drops Qt's messages: millions of inputs would print millions of lines. */
inline void silenceQt() {
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
}

}  // namespace fuzz
