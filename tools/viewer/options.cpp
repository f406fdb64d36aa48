#include "tools/viewer/options.h"

#include <QCommandLineOption>
#include <QCommandLineParser>

#include <cmath>

namespace rataip::viewer {

namespace {

// A week: far beyond any use, and its milliseconds fit every timer.
constexpr double longestSeconds = 7.0 * 24.0 * 3600.0;
constexpr double shortestSeconds = 0.001;
constexpr int shortestSide = 200;
constexpr int longestSide = 16'000;

struct CommandLine {
    CommandLine() {
        parser.addPositionalArgument(QStringLiteral("plugin"),
                                     QStringLiteral("The plugin's library file. Without it, the "
                                                    "plugin beside the program or in ../plugins "
                                                    "is taken."),
                                     QStringLiteral("[plugin]"));
        parser.addOptions({help, version, size, duration, picture, lapPicture});
    }

    QCommandLineOption help{{QStringLiteral("h"), QStringLiteral("help")},
                            QStringLiteral("Show this help.")};
    QCommandLineOption version{{QStringLiteral("v"), QStringLiteral("version")},
                               QStringLiteral("Show the version.")};
    QCommandLineOption duration{QStringLiteral("duration"),
                                QStringLiteral("End S seconds after the start."),
                                QStringLiteral("S")};
    QCommandLineOption size{QStringLiteral("size"),
                            QStringLiteral("Make the window this large, for instance 1280x800."),
                            QStringLiteral("WxH")};
    QCommandLineOption picture{QStringLiteral("picture"),
                               QStringLiteral("Save a picture of the window into FILE at the end."),
                               QStringLiteral("FILE")};
    QCommandLineOption lapPicture{
        QStringLiteral("lap-picture"),
        QStringLiteral("Open the own car's last two flying laps and save a picture of that window "
                       "into FILE at the end."),
        QStringLiteral("FILE")};
    QCommandLineParser parser;
};

QString withoutFullStop(QString sentence) {
    if (sentence.endsWith(QLatin1Char('.'))) {
        sentence.chop(1);
    }
    return sentence;
}

void readDuration(const CommandLine& line, ParsedArguments& parsed) {
    if (!line.parser.isSet(line.duration)) {
        return;
    }
    const QString text = line.parser.value(line.duration);
    bool isNumber = false;
    const double seconds = text.toDouble(&isNumber);
    if (!isNumber || !std::isfinite(seconds) || seconds < shortestSeconds ||
        seconds > longestSeconds) {
        parsed.error = QStringLiteral("--duration takes seconds from %1 to %2, not \"%3\"")
                           .arg(shortestSeconds)
                           .arg(longestSeconds, 0, 'f', 0)
                           .arg(text);
        return;
    }
    parsed.options.duration = std::chrono::milliseconds(std::llround(seconds * 1000.0));
}

void readSize(const CommandLine& line, ParsedArguments& parsed) {
    if (!line.parser.isSet(line.size)) {
        return;
    }
    const QString text = line.parser.value(line.size);
    const QStringList sides = text.split(QLatin1Char('x'));
    const QSize size(sides.value(0).toInt(), sides.value(1).toInt());
    const bool isInRange = size.width() >= shortestSide && size.width() <= longestSide &&
                           size.height() >= shortestSide && size.height() <= longestSide;
    if (sides.size() != 2 || !isInRange) {
        parsed.error = QStringLiteral("--size takes width x height from %1 to %2, not \"%3\"")
                           .arg(shortestSide)
                           .arg(longestSide)
                           .arg(text);
        return;
    }
    parsed.options.size = size;
}

void readPluginPath(const CommandLine& line, ParsedArguments& parsed) {
    const QStringList files = line.parser.positionalArguments();
    if (files.size() > 1) {
        parsed.error = QStringLiteral("one plugin at a time, not also \"%1\"").arg(files.at(1));
    } else if (files.size() == 1 && files.constFirst().isEmpty()) {
        parsed.error = QStringLiteral("the plugin's path is empty");
    } else if (files.size() == 1) {
        parsed.options.pluginPath = files.constFirst();
    }
}

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
    parsed.options.picturePath = line.parser.value(line.picture);
    parsed.options.lapPicturePath = line.parser.value(line.lapPicture);
    readPluginPath(line, parsed);
    readDuration(line, parsed);
    readSize(line, parsed);
    const bool wantsPicture =
        !parsed.options.picturePath.isEmpty() || !parsed.options.lapPicturePath.isEmpty();
    if (parsed.error.isEmpty() && wantsPicture && !parsed.options.duration) {
        parsed.error = QStringLiteral("a picture is saved at the end, which takes --duration");
    }
    return parsed;
}

QString helpText() {
    CommandLine line;
    line.parser.setApplicationDescription(QStringLiteral(
        "Loads the live-telemetry plugin as a host does, connects it to the simulator and shows\n"
        "in a window what it delivers: the cars, where they are, the own car's live traces, and\n"
        "every finished lap with its channels."));
    return line.parser.helpText() + QStringLiteral(
                                        "\n"
                                        "Exit status:\n"
                                        "  0  closed, or the time asked for is over\n"
                                        "  1  the arguments make no sense\n"
                                        "  2  a picture could not be made\n");
}

QString versionText() {
    return QStringLiteral("rataip-viewer " RATAIP_VERSION "\n");
}

}  // namespace rataip::viewer
