#pragma once

#include <QString>
#include <QtGlobal>

#include <functional>

/**
 * The message handler of a host, while one exists: hears what the plugin logs of its link and of
 * its laps, and may act on it. Everything else goes where it went before. One at a time.
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
