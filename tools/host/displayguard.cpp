#include "tools/host/displayguard.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QtGlobal>

#include <cstdio>
#include <cstdlib>
#include <mutex>

namespace rataip::host {

namespace {

struct Message {
    QtMsgType type;
    QByteArray category;
    QString text;
};

// Static, because Qt passes its messages to a plain function. It may do so on any thread.
struct Held {
    std::mutex lock;
    QList<Message> messages;
    std::string sentence;
    int exitStatus = 0;
    QtMessageHandler handlerBefore = nullptr;
};

Held& held() {
    static Held all;
    return all;
}

/** The first message states the cause; the last only says that everything was tried. */
QString reason(const QList<Message>& messages, const QString& last) {
    const QString text = messages.isEmpty() ? last : messages.constFirst().text;
    return text.section(QLatin1Char('\n'), 0, 0).trimmed();
}

void hold(QtMsgType type, const QMessageLogContext& context, const QString& text) {
    const std::lock_guard guard(held().lock);
    if (type != QtFatalMsg) {
        held().messages.append({type, context.category, text});
        return;
    }
    std::fprintf(stderr, "%s (%s)\n", held().sentence.c_str(),
                 qPrintable(reason(held().messages, text)));
    std::fflush(stderr);
    // A normal exit would run destructors on a half-constructed application object.
    std::_Exit(held().exitStatus);
}

}  // namespace

DisplayGuard::DisplayGuard(const std::string& sentence, int exitStatus) {
    held().sentence = sentence;
    held().exitStatus = exitStatus;
    held().handlerBefore = qInstallMessageHandler(hold);
}

DisplayGuard::~DisplayGuard() {
    qInstallMessageHandler(held().handlerBefore);
    const std::lock_guard guard(held().lock);
    for (const Message& message : held().messages) {
        const QMessageLogContext context(nullptr, 0, nullptr, message.category.constData());
        qt_message_output(message.type, context, message.text);
    }
    held().messages.clear();
}

}  // namespace rataip::host
