#include "tools/viewer/options.h"

#include "tools/host/commandline.h"

namespace rataip::viewer {

namespace {

constexpr int kShortestSide = 200;
constexpr int kLongestSide = 16'000;

struct Line {
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
    host::CommandLine values{{size, duration, picture, lapPicture}};
};

std::optional<QSize> windowSize(Line& line) {
    if (!line.values.isSet(line.size)) {
        return std::nullopt;
    }
    const QString text = line.values.text(line.size);
    const QStringList sides = text.split(QLatin1Char('x'));
    const QSize size(sides.value(0).toInt(), sides.value(1).toInt());
    const bool isInRange = size.width() >= kShortestSide && size.width() <= kLongestSide &&
                           size.height() >= kShortestSide && size.height() <= kLongestSide;
    if (sides.size() != 2 || !isInRange) {
        line.values.complain(QStringLiteral("--size takes width x height from %1 to %2, not \"%3\"")
                                 .arg(kShortestSide)
                                 .arg(kLongestSide)
                                 .arg(text));
        return std::nullopt;
    }
    return size;
}

Options optionsOf(Line& line) {
    Options options;
    options.picturePath = line.values.text(line.picture);
    options.lapPicturePath = line.values.text(line.lapPicture);
    options.pluginPath = line.values.pluginPath();
    options.duration = line.values.seconds(line.duration, host::kShortestDurationSeconds);
    options.size = windowSize(line);
    const bool wantsPicture = !options.picturePath.isEmpty() || !options.lapPicturePath.isEmpty();
    if (wantsPicture && !options.duration) {
        line.values.complain(
            QStringLiteral("a picture is saved at the end, which takes --duration"));
    }
    return options;
}

}  // namespace

ParsedArguments parseArguments(const QStringList& arguments) {
    Line line;
    line.values.parse(arguments);
    ParsedArguments parsed;
    parsed.request = line.values.request();
    if (parsed.request == ParsedArguments::Request::Run) {
        parsed.options = optionsOf(line);
    }
    parsed.error = line.values.error();
    return parsed;
}

QString helpText() {
    Line line;
    return line.values.helpText(QStringLiteral("Loads the live-telemetry plugin as a host does, "
                                               "connects it to the simulator and shows\n"
                                               "in a window what it delivers: the cars, where they "
                                               "are, the own car's live traces, and\n"
                                               "every finished lap with its channels.")) +
           QStringLiteral(
               "\n"
               "Exit status:\n"
               "  0  closed, or the time asked for is over\n"
               "  1  the arguments make no sense\n"
               "  2  a picture could not be made\n"
               "  3  no window could be opened: there is no display\n");
}

QString versionText() {
    return QStringLiteral("rataip-viewer " RATAIP_VERSION "\n");
}

}  // namespace rataip::viewer
