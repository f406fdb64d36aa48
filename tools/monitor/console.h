#pragma once

#include <QString>
#include <QTextStream>

namespace rataip::monitor {

/**
 * Lines of text with one status line below them.
 *
 * On a terminal the status line is rewritten in place and stays the last; elsewhere every status
 * is a line of its own. Everything written is flushed at once, so that a pipe's reader sees it
 * when it happens. A stream that no longer takes text is written to in vain, which isComplete()
 * tells (for a pipe that takes prepareStandardOutput()).
 */
class Console {
public:
    /** `out` must outlive the console. `isTerminal` chooses the way the status is shown. */
    Console(QTextStream& out, bool isTerminal) : m_out(out), m_isTerminal(isTerminal) {}

    [[nodiscard]] bool isTerminal() const { return m_isTerminal; }

    /** Whether the stream has taken everything so far. */
    [[nodiscard]] bool isComplete() const { return m_out.status() == QTextStream::Ok; }

    /**
     * Writes `text` as lines of their own, above the status line. An empty text is an empty line.
     */
    void print(const QString& text);

    /** Replaces the status line. An empty text takes it away. */
    void setStatus(const QString& text);

private:
    void eraseStatus();

    QTextStream& m_out;
    bool m_isTerminal;
    QString m_status;  // what the terminal's last line shows
};

}  // namespace rataip::monitor
