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
 * only positional argument, and the program's own options with checked values.
 *
 * The first mistake is kept as a sentence in error(). A value that makes no sense is treated as not
 * given.
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

    /** What the user asked for. Run when there is an error. */
    [[nodiscard]] Request request() const;

    /** One sentence without a full stop, or empty while no mistake was found. */
    [[nodiscard]] QString error() const { return m_error; }

    /** Reports a mistake found by the program. An earlier one takes precedence. */
    void complain(const QString& sentence);

    [[nodiscard]] bool isSet(const QCommandLineOption& option) const;

    /** The option's text, or empty when it is not set. */
    [[nodiscard]] QString text(const QCommandLineOption& option) const;

    /** The plugin's file, or empty to search the standard places. */
    [[nodiscard]] QString pluginPath();

    /** A duration from `least` seconds to a week, in milliseconds. */
    [[nodiscard]] std::optional<std::chrono::milliseconds> seconds(const QCommandLineOption& option,
                                                                   double least);

    /** A whole number of at least 1. */
    [[nodiscard]] std::optional<int> count(const QCommandLineOption& option);

    /** The path of a folder, which need not exist. */
    [[nodiscard]] QString folder(const QCommandLineOption& option);

    /** The text of --help, which begins with `description`. */
    [[nodiscard]] QString helpText(const QString& description);

private:
    QCommandLineOption m_help;
    QCommandLineOption m_version;
    QCommandLineParser m_parser;
    QString m_error;
};

/** A command line that was read, with the program's own options. */
template <typename Options>
struct ParsedArguments {
    using Request = CommandLine::Request;

    Request request = Request::Run;
    Options options;
    QString error;  // one sentence when the arguments make no sense, else empty
};

/** The shortest duration, in seconds: one step of a timer. */
constexpr double kShortestDurationSeconds = 0.001;

}  // namespace rataip::host
