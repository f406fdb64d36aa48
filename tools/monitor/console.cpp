#include "tools/monitor/console.h"

namespace rataip::monitor {

void Console::print(const QString& text) {
    const QString status = m_status;
    eraseStatus();
    m_out << text << '\n';
    m_out << status;
    m_status = status;
    m_out.flush();
}

void Console::setStatus(const QString& text) {
    if (m_isTerminal) {
        eraseStatus();
        m_out << text;
        m_status = text;
    } else if (!text.isEmpty()) {
        m_out << text << '\n';
    }
    m_out.flush();
}

// Overwrites with spaces, because not every terminal understands control sequences.
void Console::eraseStatus() {
    if (!m_status.isEmpty()) {
        m_out << '\r' << QString(m_status.size(), QLatin1Char(' ')) << '\r';
        m_status.clear();
    }
}

}  // namespace rataip::monitor
