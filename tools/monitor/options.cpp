#include "tools/monitor/options.h"

#include "tools/host/commandline.h"

#include <QByteArrayView>

#include <algorithm>

namespace rataip::monitor {

namespace {

constexpr char kExportName[] = "export";

struct Line {
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
    QCommandLineOption exportFolder{QString::fromLatin1(kExportName),
                                    QStringLiteral("Save every finished lap into the folder DIR: "
                                                   "its channels as CSV, its header and values as "
                                                   "JSON, a picture as PNG."),
                                    QStringLiteral("DIR")};
    host::CommandLine values{{wait, laps, duration, exportFolder}};
};

}  // namespace

ParsedArguments parseArguments(const QStringList& arguments) {
    Line line;
    line.values.parse(arguments);
    ParsedArguments parsed;
    parsed.request = line.values.request();
    if (parsed.request == ParsedArguments::Request::Run) {
        parsed.options.pluginPath = line.values.pluginPath();
        parsed.options.wait = line.values.seconds(line.wait, 0.0);
        parsed.options.duration =
            line.values.seconds(line.duration, host::kShortestDurationSeconds);
        parsed.options.laps = line.values.count(line.laps);
        parsed.options.exportFolder = line.values.folder(line.exportFolder);
    }
    parsed.error = line.values.error();
    return parsed;
}

bool asksForExport(int count, const char* const* arguments) {
    const QByteArrayView name(kExportName);
    return std::any_of(arguments, arguments + count, [name](const char* argument) {
        QByteArrayView text(argument);
        while (text.startsWith('-')) {
            text = text.sliced(1);
        }
        return text.startsWith(name);
    });
}

QString helpText() {
    Line line;
    return line.values.helpText(QStringLiteral("Loads the live-telemetry plugin as a host does, "
                                               "connects it to the simulator and prints\n"
                                               "what it delivers: messages, the cars, and a line "
                                               "for every finished lap. Ctrl-C ends "
                                               "it.")) +
           QStringLiteral(
               "\n"
               "Exit status:\n"
               "  0  got what was asked for\n"
               "  1  the arguments make no sense\n"
               "  2  the plugin was not found or cannot be used\n"
               "  3  no data of a simulator arrived\n"
               "  4  it ended before the laps or the time asked for\n"
               "  5  laps to save, or lines of the output, could not be written\n"
               "\n"
               "The plugin's own diagnostics are shown with "
               "QT_LOGGING_RULES=default.debug=true.\n");
}

QString versionText() {
    return QStringLiteral("rataip-monitor " RATAIP_VERSION "\n");
}

}  // namespace rataip::monitor
