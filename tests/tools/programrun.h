#pragma once

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QStringList>

#include <gtest/gtest.h>

/** How a program ended and what it said. */
struct ProgramRun {
    int status = -1;  // -1 when it did not end by itself
    std::string out;
    std::string err;
};

/** Runs a program to its end, without anything to read on its standard input. */
inline ProgramRun runProgram(const QString& program, const QStringList& arguments,
                             const QString& folder = QString()) {
    constexpr int kLongestRunMs = 60'000;
    QProcess process;
    process.setStandardInputFile(QProcess::nullDevice());
    process.setWorkingDirectory(folder);
    process.start(program, arguments);
    ProgramRun run;
    if (process.waitForFinished(kLongestRunMs) && process.exitStatus() == QProcess::NormalExit) {
        run.status = process.exitCode();
    }
    const auto withPlainLineEnds = [](QByteArray text) {
        return text.replace("\r\n", "\n").toStdString();
    };
    run.out = withPlainLineEnds(process.readAllStandardOutput());
    run.err = withPlainLineEnds(process.readAllStandardError());
    return run;
}
