#include "tools/viewer/options.h"

#include "tests/support/printqt.h"

#include <gtest/gtest.h>

namespace {

using rataip::viewer::parseArguments;
using rataip::viewer::ParsedArguments;
using std::chrono::milliseconds;

ParsedArguments parse(const QStringList& arguments) {
    return parseArguments(QStringList(QStringLiteral("rataip-viewer")) + arguments);
}

TEST(ViewerOptions, AreAllOptional) {
    const ParsedArguments parsed = parse({});
    EXPECT_TRUE(parsed.error.isEmpty());
    EXPECT_EQ(parsed.request, ParsedArguments::Request::Run);
    EXPECT_TRUE(parsed.options.pluginPath.isEmpty());
    EXPECT_FALSE(parsed.options.duration);
    EXPECT_FALSE(parsed.options.size);
}

TEST(ViewerOptions, TakeAPluginATimeASizeAndPictures) {
    const ParsedArguments parsed =
        parse({QStringLiteral("a b/p.so"), QStringLiteral("--duration"), QStringLiteral("2.5"),
               QStringLiteral("--size"), QStringLiteral("800x600"), QStringLiteral("--picture"),
               QStringLiteral("w.png"), QStringLiteral("--lap-picture"), QStringLiteral("l.png")});
    EXPECT_TRUE(parsed.error.isEmpty()) << parsed.error.toStdString();
    EXPECT_EQ(parsed.options.pluginPath, QStringLiteral("a b/p.so"));
    EXPECT_EQ(parsed.options.duration, milliseconds(2500));
    EXPECT_EQ(parsed.options.size, QSize(800, 600));
    EXPECT_EQ(parsed.options.picturePath, QStringLiteral("w.png"));
    EXPECT_EQ(parsed.options.lapPicturePath, QStringLiteral("l.png"));
}

TEST(ViewerOptions, RefuseWhatMakesNoSenseInOneSentence) {
    const QList<QStringList> wrong = {{QStringLiteral("--nothing")},
                                      {QStringLiteral("--duration")},
                                      {QStringLiteral("--duration"), QStringLiteral("soon")},
                                      {QStringLiteral("--duration"), QStringLiteral("0")},
                                      {QStringLiteral("--duration"), QStringLiteral("nan")},
                                      {QStringLiteral("--duration"), QStringLiteral("1e99")},
                                      {QStringLiteral("--size"), QStringLiteral("800")},
                                      {QStringLiteral("--size"), QStringLiteral("800x")},
                                      {QStringLiteral("--size"), QStringLiteral("10x600")},
                                      {QStringLiteral("--size"), QStringLiteral("800x99999")},
                                      {QStringLiteral("--size"), QStringLiteral("800x600x2")},
                                      {QStringLiteral("--picture"), QStringLiteral("w.png")},
                                      {QStringLiteral("--lap-picture"), QStringLiteral("l.png")},
                                      {QStringLiteral("a.so"), QStringLiteral("b.so")},
                                      {QString()}};
    for (const QStringList& arguments : wrong) {
        const QString error = parse(arguments).error;
        EXPECT_FALSE(error.isEmpty()) << arguments.join(QLatin1Char(' ')).toStdString();
        EXPECT_FALSE(error.endsWith(QLatin1Char('.'))) << error.toStdString();
    }
}

TEST(ViewerOptions, ExplainThemselves) {
    EXPECT_EQ(parse({QStringLiteral("-h")}).request, ParsedArguments::Request::ShowHelp);
    EXPECT_EQ(parse({QStringLiteral("--version")}).request, ParsedArguments::Request::ShowVersion);
    for (const char* option : {"--duration", "--size", "--picture", "--lap-picture", "[plugin]"}) {
        EXPECT_TRUE(rataip::viewer::helpText().contains(QString::fromLatin1(option))) << option;
    }
}

}  // namespace
