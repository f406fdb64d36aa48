#pragma once

#include <QString>
#include <QTextStream>

namespace rataip::monitor {

/**
 * Lines of text with one status line below them.
 *
 * On a terminal the status line is rewritten in place and stays the last line; elsewhere every
 * status is a line of its own. All output is flushed at once for the readers of pipes. When the
 * stream no longer accepts output, isComplete() returns false (for pipes only after
 * prepareStandardOutput()).
 */
class Console {
public:
    /** `out` must outlive the console. `isTerminal` decides how the status is shown. */
    Console(QTextStream& out, bool isTerminal) : m_out(out), m_isTerminal(isTerminal) {}

    [[nodiscard]] bool isTerminal() const { return m_isTerminal; }

    /** Whether the stream has accepted everything so far. */
    [[nodiscard]] bool isComplete() const { return m_out.status() == QTextStream::Ok; }

    /**
     * Writes `text` as separate lines above the status line. An empty text is an empty line.
     */
    void print(const QString& text);

    /** Replaces the status line. An empty text removes it. */
    void setStatus(const QString& text);

private:
    void eraseStatus();

    QTextStream& m_out;
    bool m_isTerminal;
    QString m_status;  // shown on the terminal's last line
};

}  // namespace rataip::monitor
