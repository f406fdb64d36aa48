#include "tools/monitor/options.h"

#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;
using rataip::monitor::ParsedArguments;

ParsedArguments parse(const QStringList& arguments) {
    return rataip::monitor::parseArguments(QStringList(QStringLiteral("monitor")) + arguments);
}

void expectError(const QStringList& arguments, const char* part) {
    const QString error = parse(arguments).error;
    EXPECT_TRUE(error.contains(QLatin1String(part))) << error.toStdString();
}

TEST(MonitorArguments, AskForNothingByDefault) {
    const ParsedArguments parsed = parse({});
    EXPECT_TRUE(parsed.error.isEmpty());
    EXPECT_EQ(parsed.request, ParsedArguments::Request::Run);
    EXPECT_TRUE(parsed.options.pluginPath.isEmpty());
    EXPECT_EQ(parsed.options.wait, std::nullopt);
    EXPECT_EQ(parsed.options.duration, std::nullopt);
    EXPECT_EQ(parsed.options.laps, std::nullopt);
}

TEST(MonitorArguments, NameThePluginAndTheLimits) {
    const ParsedArguments parsed =
        parse({QStringLiteral("--laps"), QStringLiteral("3"), QStringLiteral("a b/plugin.so"),
               QStringLiteral("--wait=0.5"), QStringLiteral("--duration"), QStringLiteral("90")});
    EXPECT_TRUE(parsed.error.isEmpty());
    EXPECT_EQ(parsed.options.pluginPath, QStringLiteral("a b/plugin.so"));
    EXPECT_EQ(parsed.options.laps, 3);
    EXPECT_EQ(parsed.options.wait, 500ms);
    EXPECT_EQ(parsed.options.duration, 90s);
}

TEST(MonitorArguments, TakeAWaitOfZero) {
    EXPECT_EQ(parse({QStringLiteral("--wait"), QStringLiteral("0")}).options.wait, 0ms);
}

TEST(MonitorArguments, NameTheFolderForLaps) {
    EXPECT_EQ(parse({QStringLiteral("--export"), QStringLiteral("a b")}).options.exportFolder,
              QStringLiteral("a b"));
    EXPECT_TRUE(parse({}).options.exportFolder.isEmpty());
    expectError({QStringLiteral("--export"), QString()}, "--export takes a folder");
    expectError({QStringLiteral("--export")}, "export");
}

TEST(MonitorArguments, TellInAdvanceWhetherLapsAreSaved) {
    for (const char* argument : {"--export", "--export=a", "-export"}) {
        const char* const arguments[] = {"monitor", "--laps", argument};
        EXPECT_TRUE(rataip::monitor::asksForExport(3, arguments)) << argument;
        EXPECT_FALSE(rataip::monitor::asksForExport(2, arguments)) << argument;
    }
}

TEST(MonitorArguments, RefuseInvalidSeconds) {
    for (const char* text : {"", "soon", "-1", "nan", "inf", "1e300", "604801", "5s"}) {
        expectError({QStringLiteral("--wait"), QLatin1String(text)}, "--wait takes seconds");
        expectError({QStringLiteral("--duration"), QLatin1String(text)},
                    "--duration takes seconds");
    }
    expectError({QStringLiteral("--duration"), QStringLiteral("0")}, "--duration takes seconds");
}

TEST(MonitorArguments, RefuseAnInvalidNumberOfLaps) {
    for (const char* text : {"", "many", "0", "-3", "1.5", "2147483648"}) {
        expectError({QStringLiteral("--laps"), QLatin1String(text)}, "--laps takes a whole number");
    }
}

TEST(MonitorArguments, ReportTheFirstMistake) {
    expectError({QStringLiteral("--wait"), QStringLiteral("x"), QStringLiteral("--laps"),
                 QStringLiteral("2")},
                "--wait");
    expectError({QStringLiteral("--wait"), QStringLiteral("x"), QStringLiteral("--laps"),
                 QStringLiteral("y")},
                "--wait");
}

TEST(MonitorArguments, RefuseAnOptionWithoutItsValue) {
    expectError({QStringLiteral("--laps")}, "laps");
}

TEST(MonitorArguments, RefuseUnknownOptions) {
    expectError({QStringLiteral("--colour")}, "colour");
}

TEST(MonitorArguments, RefuseASecondPlugin) {
    expectError({QStringLiteral("a.so"), QStringLiteral("b.so")}, "b.so");
}

TEST(MonitorArguments, RefuseAnEmptyPath) {
    expectError({QString()}, "empty");
}

TEST(MonitorArguments, AskForHelpOrVersionBeforeAnythingElse) {
    EXPECT_EQ(
        parse({QStringLiteral("--help"), QStringLiteral("--laps"), QStringLiteral("x")}).request,
        ParsedArguments::Request::ShowHelp);
    EXPECT_EQ(parse({QStringLiteral("-h")}).request, ParsedArguments::Request::ShowHelp);
    EXPECT_EQ(parse({QStringLiteral("--version")}).request, ParsedArguments::Request::ShowVersion);
    EXPECT_EQ(parse({QStringLiteral("-v")}).request, ParsedArguments::Request::ShowVersion);
}

TEST(MonitorHelp, ExplainsEveryOptionAndStatus) {
    const QString help = rataip::monitor::helpText();
    for (const char* text :
         {"--help", "--version", "--wait <S>", "--laps <N>", "--duration <S>", "--export <DIR>",
          "plugin", "  0  ", "  1  ", "  2  ", "  3  ", "  4  ", "  5  "}) {
        EXPECT_TRUE(help.contains(QLatin1String(text))) << text;
    }
}

}  // namespace
