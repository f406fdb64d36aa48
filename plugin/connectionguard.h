#pragma once

#include <QObject>
#include <QPointer>

/**
 * Tells, after a signal or a line of the log, whether the work that emitted it may go on: a slot or
 * the message handler of the host may have disconnected the plugin, connected it anew or deleted
 * it. The number of the connection is a member of the plugin and is looked at only while the plugin
 * lives. Takes no memory, so that it can be made when there is none.
 */
class ConnectionGuard {
public:
    ConnectionGuard(const QPointer<QObject>& plugin, const quint64& connectionNumber)
        : m_plugin(plugin), m_number(&connectionNumber), m_expected(connectionNumber) {}

    [[nodiscard]] bool isDeleted() const { return m_plugin.isNull(); }
    [[nodiscard]] bool isSameConnection() const { return !isDeleted() && *m_number == m_expected; }

private:
    QPointer<QObject> m_plugin;
    const quint64* m_number;
    quint64 m_expected;
};
