#pragma once

#include <QElapsedTimer>
#include <QProcess>
#include <QString>
#include <QStringList>

#include <string>

/** A program that runs beside the test; it is killed when it still runs at the end. */
class BackgroundProgram {
public:
    BackgroundProgram(const QString& program, const QStringList& arguments) {
        m_process.setStandardInputFile(QProcess::nullDevice());
        m_process.setProcessChannelMode(QProcess::MergedChannels);
        m_process.start(program, arguments);
    }

    ~BackgroundProgram() { kill(); }

    BackgroundProgram(const BackgroundProgram&) = delete;
    BackgroundProgram& operator=(const BackgroundProgram&) = delete;

    /** Waits until the program has written `text` `times` times; false when it ended before. */
    [[nodiscard]] bool waitForOutput(const char* text, int times = 1) {
        QElapsedTimer waited;
        waited.start();
        while (m_output.count(text) < times && waited.elapsed() < longestWaitMs) {
            const bool isRunning = m_process.state() != QProcess::NotRunning;
            m_process.waitForReadyRead(100);
            m_output += m_process.readAll();
            if (!isRunning) {
                break;
            }
        }
        return m_output.count(text) >= times;
    }

    /** Waits for the program's end. Its exit status, or -1 when it does not end in order. */
    [[nodiscard]] int waitForEnd() {
        const bool hasEnded =
            m_process.state() == QProcess::NotRunning || m_process.waitForFinished(longestWaitMs);
        m_output += m_process.readAll();
        const bool isInOrder = hasEnded && m_process.exitStatus() == QProcess::NormalExit;
        return isInOrder ? m_process.exitCode() : -1;
    }

    /** Asks the program to end. */
    void terminate() { m_process.terminate(); }

    /** Ends the program without giving it a chance to tidy up. */
    void kill() {
        m_process.kill();
        m_process.waitForFinished(longestWaitMs);
    }

    /** The process's id; 0 while there is none. */
    [[nodiscard]] qint64 id() const { return m_process.processId(); }

    /** All that it has written so far, as far as one of the waits has read it. */
    [[nodiscard]] std::string output() const { return m_output.toStdString(); }

private:
    // Generous, since it is waited out only when a test fails.
    static constexpr int longestWaitMs = 240'000;

    QProcess m_process;
    QByteArray m_output;
};
