#include "tests/plugin/hostlog.h"

#include <utility>

namespace {

bool isOfTheLink(QtMsgType type, const QMessageLogContext& context) {
    return type == QtWarningMsg && qstrcmp(context.category, "rataip.link") == 0;
}

bool isOfALap(QtMsgType type, const QMessageLogContext& context) {
    return type == QtDebugMsg && qstrcmp(context.category, "default") == 0;
}

}  // namespace

HostLog::HostLog(std::function<void(const QString& text)> newListener) {
    listener = std::move(newListener);
    previous = qInstallMessageHandler(&HostLog::note);
}

HostLog::~HostLog() {
    qInstallMessageHandler(previous);
    listener = nullptr;
}

void HostLog::note(QtMsgType type, const QMessageLogContext& context, const QString& text) {
    if (isOfTheLink(type, context) || isOfALap(type, context)) {
        listener(text);
    } else if (previous != nullptr) {
        previous(type, context, text);
    }
}
