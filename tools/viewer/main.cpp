#include "tools/host/pluginfile.h"
#include "tools/viewer/mainwindow.h"
#include "tools/viewer/options.h"
#include "tools/viewer/parentconsole.h"
#include "tools/viewer/session.h"

#include <QApplication>
#include <QLoggingCategory>
#include <QSettings>
#include <QTextStream>
#include <QTimer>

#include <cstdio>

namespace {

using rataip::viewer::LapStore;
using rataip::viewer::LapWindow;
using rataip::viewer::MainWindow;
using rataip::viewer::Options;
using rataip::viewer::ParsedArguments;
using rataip::viewer::Session;

enum ExitStatus {
    Ok = 0,
    BadArguments = 1,
    NoPicture = 2,
};

int fail(ExitStatus status, const QString& sentence) {
    QTextStream(stderr) << "rataip-viewer: " << sentence << '\n';
    return status;
}

/** A plugin that cannot be used is told by the window, where another can be chosen. */
void loadPlugin(Session& session, const QString& requestedPath) {
    const rataip::host::PluginFile file =
        rataip::host::findPlugin(requestedPath, QCoreApplication::applicationDirPath());
    if (!file.error.isEmpty()) {
        session.setPluginError(file.error);
    } else if (session.loadPlugin(file.path)) {
        session.connectToSource();
    }
}

/** The own car's flying laps, newest first. */
QList<LapStore::LapPointer> ownFlyingLaps(const MainWindow& window) {
    QList<LapStore::LapPointer> laps;
    for (const LapStore::LapPointer& lap : window.laps().laps()) {
        if (lap->detailedTelemetry() && lap->completed() &&
            lap->lapType() == TLM::SDK::LapType::FlyingLap) {
            laps.prepend(lap);
        }
    }
    return laps;
}

int savePicture(QWidget& widget, const QString& path) {
    QCoreApplication::processEvents();
    return widget.grab().save(path)
               ? Ok
               : fail(NoPicture, QStringLiteral("cannot write the picture %1").arg(path));
}

int saveLapPicture(MainWindow& window, const QString& path) {
    const QList<LapStore::LapPointer> laps = ownFlyingLaps(window);
    if (laps.isEmpty()) {
        return fail(NoPicture,
                    QStringLiteral("the own car has finished no flying lap to make a picture of"));
    }
    LapWindow* const lapWindow = window.openLap(laps.constFirst());
    if (laps.size() > 1) {
        lapWindow->compareWith(laps.at(1));
    }
    return savePicture(*lapWindow, path);
}

int savePictures(MainWindow& window, const Options& options) {
    int status = Ok;
    if (!options.picturePath.isEmpty()) {
        window.refresh();
        status = savePicture(window, options.picturePath);
    }
    if (status == Ok && !options.lapPicturePath.isEmpty()) {
        status = saveLapPicture(window, options.lapPicturePath);
    }
    return status;
}

int show(const Options& options) {
    Session session;
    QSettings settings;
    MainWindow window(session, settings);
    if (options.size) {
        window.resize(*options.size);
    }
    window.show();
    loadPlugin(session, options.pluginPath);
    QTimer timeOver;
    timeOver.setSingleShot(true);
    QObject::connect(&timeOver, &QTimer::timeout, &window, [&window, &options] {
        const int status = savePictures(window, options);
        window.close();
        QCoreApplication::exit(status);
    });
    if (options.duration) {
        timeOver.start(*options.duration);
    }
    return QApplication::exec();
}

}  // namespace

int main(int argc, char* argv[]) {
    rataip::viewer::useParentConsole();
    QApplication application(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("rataip"));
    QCoreApplication::setApplicationName(QStringLiteral("rataip-viewer"));
    // The plugin's diagnostics are for its developers; the environment can bring them back.
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));

    const ParsedArguments parsed = rataip::viewer::parseArguments(QCoreApplication::arguments());
    if (!parsed.error.isEmpty()) {
        return fail(BadArguments, parsed.error + QStringLiteral(" (see --help)"));
    }
    if (parsed.request == ParsedArguments::Request::ShowHelp) {
        QTextStream(stdout) << rataip::viewer::helpText();
        return Ok;
    }
    if (parsed.request == ParsedArguments::Request::ShowVersion) {
        QTextStream(stdout) << rataip::viewer::versionText();
        return Ok;
    }
    return show(parsed.options);
}
