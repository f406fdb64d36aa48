#pragma once

#include <QString>
#include <QtGlobal>

#include <functional>

/**
 * A host's message handler while it exists: passes on what the plugin logs about its link and its
 * laps. Other messages go to the previous handler. One at a time.
 */
class HostLog {
public:
    explicit HostLog(std::function<void(const QString& text)> listener);
    ~HostLog();
    HostLog(const HostLog&) = delete;
    HostLog& operator=(const HostLog&) = delete;

private:
    // A message handler is a plain function.
    static void note(QtMsgType type, const QMessageLogContext& context, const QString& text);

    static inline QtMessageHandler previous = nullptr;
    static inline std::function<void(const QString& text)> listener;
};
