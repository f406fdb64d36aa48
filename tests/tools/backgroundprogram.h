#pragma once

#include "tests/support/childprocess.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <QString>
#include <QStringList>

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

/** A program that runs beside the test; it is killed when it still runs at the end. */
class BackgroundProgram {
public:
    BackgroundProgram(const QString& program, const QStringList& arguments) {
        std::vector<std::string> words;
        for (const QString& argument : arguments) {
            words.push_back(argument.toLocal8Bit().toStdString());
        }
        EXPECT_TRUE(m_process.start(program.toLocal8Bit().toStdString(), words,
                                    testsupport::ChildProcess::Console::Own));
    }

    /** Waits until the program has written `text` `times` times; false when it ended before. */
    [[nodiscard]] bool waitForOutput(const char* text, int times = 1) {
        QElapsedTimer waited;
        waited.start();
        while (m_output.count(text) < times && waited.elapsed() < longestWaitMs) {
            const bool isRunning = m_process.isRunning();
            if (!takeLine() && !isRunning) {
                break;
            }
        }
        return m_output.count(text) >= times;
    }

    /** Waits for the program's end. Its exit status, or -1 when it does not end in order. */
    [[nodiscard]] int waitForEnd() {
        QElapsedTimer waited;
        waited.start();
        // A program whose output nobody takes does not come to its end.
        while (m_process.isRunning() && waited.elapsed() < longestWaitMs) {
            takeLine();
        }
        while (takeLine()) {
        }
        return m_process.waitForExit(0).value_or(-1);
    }

    /** Asks the program to end. */
    void terminate() { m_process.askToEnd(); }

    /** Ends the program without giving it a chance to tidy up. */
    void kill() { m_process.kill(); }

    /** The system's number of the process. */
    [[nodiscard]] int id() const { return m_process.id(); }

    /** All that it has written so far, errors too, as far as one of the waits has read it. */
    [[nodiscard]] std::string output() const { return m_output.toStdString(); }

private:
    // Generous, since it is waited out only when a test fails.
    static constexpr int longestWaitMs = 240'000;

    /** Waits a moment for the next line; false when none came. */
    bool takeLine() {
        constexpr int momentMs = 100;
        const std::optional<std::string> line = m_process.readLine(momentMs);
        if (line) {
            m_output += QByteArray::fromStdString(*line) + '\n';
        }
        return line.has_value();
    }

    testsupport::ChildProcess m_process;
    QByteArray m_output;
};
