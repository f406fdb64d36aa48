#pragma once

#include <QCommandLineOption>
#include <QCommandLineParser>
#include <QList>
#include <QString>
#include <QStringList>

#include <chrono>
#include <optional>

namespace rataip::host {

/**
 * The command line of a program that loads the plugin: --help, --version, the plugin's file as the
 * one positional argument, and the program's own options with their values checked.
 *
 * Nothing here fails aloud: the first thing that makes no sense is kept as a sentence in error(),
 * and the value that was asked for is then as if it had not been given.
 */
class CommandLine {
public:
    enum class Request {
        Run,
        ShowHelp,
        ShowVersion,
    };

    explicit CommandLine(const QList<QCommandLineOption>& options);

    /** Reads the arguments, which begin with the program's name. */
    void parse(const QStringList& arguments);

    /** What is asked for; Run also when there is an error. */
    [[nodiscard]] Request request() const;

    /** One sentence without a full stop, or empty when all arguments so far make sense. */
    [[nodiscard]] QString error() const { return m_error; }

    /** Keeps a complaint of the program's own, unless there is an earlier one. */
    void complain(const QString& sentence);

    [[nodiscard]] bool isSet(const QCommandLineOption& option) const;

    /** The option's text, or empty when it is not set. */
    [[nodiscard]] QString text(const QCommandLineOption& option) const;

    /** The plugin's file, or empty for the standard places. */
    [[nodiscard]] QString pluginPath();

    /** A span of `least` seconds to a week, to the millisecond. */
    [[nodiscard]] std::optional<std::chrono::milliseconds> seconds(const QCommandLineOption& option,
                                                                   double least);

    /** A whole number from 1 on. */
    [[nodiscard]] std::optional<int> count(const QCommandLineOption& option);

    /** A folder's path, which need not exist. */
    [[nodiscard]] QString folder(const QCommandLineOption& option);

    /** The text of --help, with what the program does in front. */
    [[nodiscard]] QString helpText(const QString& description);

private:
    QCommandLineOption m_help;
    QCommandLineOption m_version;
    QCommandLineParser m_parser;
    QString m_error;
};

/** A command line as it was understood, with the options of the program's own. */
template <typename Options>
struct ParsedArguments {
    using Request = CommandLine::Request;

    Request request = Request::Run;
    Options options;
    QString error;  // one sentence when the arguments make no sense, else empty
};

/** The shortest duration, in seconds: one step of a timer. */
constexpr double shortestDurationSeconds = 0.001;

}  // namespace rataip::host
