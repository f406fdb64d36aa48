#include "tools/monitor/options.h"

#include <QByteArrayView>
#include <QCommandLineOption>
#include <QCommandLineParser>

#include <algorithm>
#include <cmath>

namespace rataip::monitor {

namespace {

using std::chrono::milliseconds;

// A week: far beyond any use, and its milliseconds fit every timer.
constexpr double longestSeconds = 7.0 * 24.0 * 3600.0;
// What a timer can tell from nothing.
constexpr double shortestDurationSeconds = 0.001;

constexpr char exportName[] = "export";

struct CommandLine {
    CommandLine() {
        parser.addPositionalArgument(QStringLiteral("plugin"),
                                     QStringLiteral("The plugin's library file. Without it, the "
                                                    "plugin beside the program or in ../plugins "
                                                    "is taken."),
                                     QStringLiteral("[plugin]"));
        parser.addOptions({help, version, wait, laps, duration, exportFolder});
    }

    QCommandLineOption help{{QStringLiteral("h"), QStringLiteral("help")},
                            QStringLiteral("Show this help.")};
    QCommandLineOption version{{QStringLiteral("v"), QStringLiteral("version")},
                               QStringLiteral("Show the version.")};
    QCommandLineOption wait{QStringLiteral("wait"),
                            QStringLiteral("Wait at most S seconds for a simulator that is not "
                                           "there, at the start and whenever it is gone; 0 tries "
                                           "once. Without it, wait for as long as it takes."),
                            QStringLiteral("S")};
    QCommandLineOption laps{QStringLiteral("laps"),
                            QStringLiteral("End after N finished laps of any car."),
                            QStringLiteral("N")};
    QCommandLineOption duration{QStringLiteral("duration"),
                                QStringLiteral("End S seconds after the start."),
                                QStringLiteral("S")};
    QCommandLineOption exportFolder{QString::fromLatin1(exportName),
                                    QStringLiteral("Save every finished lap into the folder DIR: "
                                                   "its channels as CSV, its header and values as "
                                                   "JSON, a picture as PNG."),
                                    QStringLiteral("DIR")};
    QCommandLineParser parser;
};

/** The parser's sentences end in a full stop; ours go on. */
QString withoutFullStop(QString sentence) {
    if (sentence.endsWith(QLatin1Char('.'))) {
        sentence.chop(1);
    }
    return sentence;
}

/**
 * Fills the options from the values on the command line, and keeps the first complaint about one.
 */
class OptionReader {
public:
    explicit OptionReader(const CommandLine& line) : m_line(line) {}

    [[nodiscard]] QString error() const { return m_error; }

    [[nodiscard]] QString pluginPath() {
        const QStringList files = m_line.parser.positionalArguments();
        if (files.isEmpty()) {
            return {};
        }
        if (files.size() > 1) {
            complain(QStringLiteral("one plugin at a time, not also \"%1\"").arg(files.at(1)));
        }
        if (files.constFirst().isEmpty()) {
            complain(QStringLiteral("the plugin's path is empty"));
        }
        return files.constFirst();
    }

    [[nodiscard]] std::optional<milliseconds> seconds(const QCommandLineOption& option,
                                                      double least) {
        if (!m_line.parser.isSet(option)) {
            return std::nullopt;
        }
        const QString text = m_line.parser.value(option);
        bool isNumber = false;
        const double seconds = text.toDouble(&isNumber);
        if (!isNumber || !std::isfinite(seconds) || seconds < least || seconds > longestSeconds) {
            complain(QStringLiteral("--%1 takes seconds from %2 to %3, not \"%4\"")
                         .arg(option.names().constFirst())
                         .arg(least)
                         .arg(longestSeconds, 0, 'f', 0)
                         .arg(text));
            return std::nullopt;
        }
        return milliseconds(std::llround(seconds * 1000.0));
    }

    [[nodiscard]] std::optional<int> count(const QCommandLineOption& option) {
        if (!m_line.parser.isSet(option)) {
            return std::nullopt;
        }
        const QString text = m_line.parser.value(option);
        bool isNumber = false;
        const int count = text.toInt(&isNumber);
        if (!isNumber || count < 1) {
            complain(QStringLiteral("--%1 takes a whole number from 1 on, not \"%2\"")
                         .arg(option.names().constFirst(), text));
            return std::nullopt;
        }
        return count;
    }

    [[nodiscard]] QString folder(const QCommandLineOption& option) {
        QString path = m_line.parser.value(option);
        if (m_line.parser.isSet(option) && path.isEmpty()) {
            complain(QStringLiteral("--%1 takes a folder").arg(option.names().constFirst()));
        }
        return path;
    }

private:
    void complain(const QString& sentence) {
        if (m_error.isEmpty()) {
            m_error = sentence;
        }
    }

    const CommandLine& m_line;
    QString m_error;
};

}  // namespace

ParsedArguments parseArguments(const QStringList& arguments) {
    ParsedArguments parsed;
    CommandLine line;
    if (!line.parser.parse(arguments)) {
        parsed.error = withoutFullStop(line.parser.errorText());
        return parsed;
    }
    if (line.parser.isSet(line.help)) {
        parsed.request = ParsedArguments::Request::ShowHelp;
        return parsed;
    }
    if (line.parser.isSet(line.version)) {
        parsed.request = ParsedArguments::Request::ShowVersion;
        return parsed;
    }
    OptionReader reader(line);
    parsed.options.pluginPath = reader.pluginPath();
    parsed.options.wait = reader.seconds(line.wait, 0.0);
    parsed.options.duration = reader.seconds(line.duration, shortestDurationSeconds);
    parsed.options.laps = reader.count(line.laps);
    parsed.options.exportFolder = reader.folder(line.exportFolder);
    parsed.error = reader.error();
    return parsed;
}

bool asksForExport(int count, const char* const* arguments) {
    const QByteArrayView name(exportName);
    return std::any_of(arguments, arguments + count, [name](const char* argument) {
        QByteArrayView text(argument);
        while (text.startsWith('-')) {
            text = text.sliced(1);
        }
        return text.startsWith(name);
    });
}

QString helpText() {
    CommandLine line;
    line.parser.setApplicationDescription(QStringLiteral(
        "Loads the live-telemetry plugin as a host does, connects it to the simulator and prints\n"
        "what it delivers: messages, the cars, and a line for every finished lap. Ctrl-C ends "
        "it."));
    return line.parser.helpText() + QStringLiteral(
                                        "\n"
                                        "Exit status:\n"
                                        "  0  got what was asked for\n"
                                        "  1  the arguments make no sense\n"
                                        "  2  the plugin was not found or cannot be used\n"
                                        "  3  no data of a simulator arrived\n"
                                        "  4  it ended before the laps or the time asked for\n"
                                        "\n"
                                        "The plugin's own diagnostics are shown with "
                                        "QT_LOGGING_RULES=default.debug=true.\n");
}

QString versionText() {
    return QStringLiteral("rataip-monitor " RATAIP_VERSION "\n");
}

}  // namespace rataip::monitor
