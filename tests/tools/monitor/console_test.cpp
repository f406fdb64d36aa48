#include "tools/monitor/console.h"

#include <QBuffer>

#include <gtest/gtest.h>

namespace {

using rataip::monitor::Console;

class ConsoleOutput : public ::testing::Test {
protected:
    QString m_text;
    QTextStream m_stream{&m_text};
};

TEST_F(ConsoleOutput, WritesLinesAsTheyCome) {
    Console console(m_stream, false);
    console.print(QStringLiteral("one"));
    console.print(QString());
    console.print(QStringLiteral("two"));
    EXPECT_EQ(m_text, QStringLiteral("one\n\ntwo\n"));
}

TEST_F(ConsoleOutput, WritesEveryStatusAsALineWithoutATerminal) {
    Console console(m_stream, false);
    console.setStatus(QStringLiteral("60 ticks/s"));
    console.print(QStringLiteral("lap"));
    console.setStatus(QString());
    console.setStatus(QStringLiteral("61 ticks/s"));
    EXPECT_EQ(m_text, QStringLiteral("60 ticks/s\nlap\n61 ticks/s\n"));
}

TEST_F(ConsoleOutput, RewritesTheStatusInPlaceOnATerminal) {
    Console console(m_stream, true);
    console.setStatus(QStringLiteral("abc"));
    console.setStatus(QStringLiteral("x"));
    EXPECT_EQ(m_text, QStringLiteral("abc\r   \rx"));
}

TEST_F(ConsoleOutput, KeepsTheStatusBelowTheLinesOnATerminal) {
    Console console(m_stream, true);
    console.setStatus(QStringLiteral("abc"));
    console.print(QStringLiteral("lap"));
    console.print(QStringLiteral("lap"));
    EXPECT_EQ(m_text, QStringLiteral("abc\r   \rlap\nabc\r   \rlap\nabc"));
}

TEST_F(ConsoleOutput, RemovesTheStatusOnATerminal) {
    Console console(m_stream, true);
    console.setStatus(QStringLiteral("abc"));
    console.setStatus(QString());
    console.setStatus(QString());
    console.print(QStringLiteral("end"));
    EXPECT_EQ(m_text, QStringLiteral("abc\r   \rend\n"));
}

TEST_F(ConsoleOutput, IsCompleteWhileTheStreamTakesEverything) {
    QBuffer device;
    ASSERT_TRUE(device.open(QIODevice::WriteOnly));
    QTextStream stream(&device);
    Console console(stream, false);
    console.print(QStringLiteral("one"));
    EXPECT_TRUE(console.isComplete());
    device.close();
    console.print(QStringLiteral("two"));
    EXPECT_FALSE(console.isComplete());
}

}  // namespace
