#include "tools/host/displayguard.h"
#include "tools/host/endrequestblocker.h"
#include "tools/host/interrupt.h"
#include "tools/viewer/mainwindow.h"
#include "tools/viewer/options.h"
#include "tools/viewer/parentconsole.h"
#include "tools/viewer/session.h"

#include <QApplication>
#include <QLoggingCategory>
#include <QSettings>
#include <QTextStream>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <optional>
#include <string_view>

namespace {

using rataip::host::DisplayGuard;
using rataip::host::EndRequestBlocker;
using rataip::host::Interrupt;
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
    NoDisplay = 3,
};

int fail(ExitStatus status, const QString& sentence) {
    QTextStream(stderr) << "rataip-viewer: " << sentence << '\n';
    return status;
}

/** The window shows why a plugin cannot be used and lets the user choose another. */
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
        if (rataip::viewer::isOwnFlyingLap(*lap)) {
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

/** A request to end takes effect at once, so the pictures due at the end are not made. */
int endOnRequest(const Options& options) {
    const bool wantsPicture = !options.picturePath.isEmpty() || !options.lapPicturePath.isEmpty();
    return wantsPicture ? fail(NoPicture, QStringLiteral("asked to end before the time for the "
                                                         "picture, so there is none"))
                        : fail(Ok, QStringLiteral("closed, as it was asked to"));
}

int show(const Options& options) {
    Interrupt interrupt;
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
        QCoreApplication::exit(savePictures(window, options));
    });
    if (options.duration) {
        timeOver.start(*options.duration);
    }
    QObject::connect(&interrupt, &Interrupt::requested, &window,
                     [&options] { QCoreApplication::exit(endOnRequest(options)); });
    const int status = QApplication::exec();
    // Only now, because an open dialog needs its window until the event loop has ended.
    if (window.isVisible()) {
        window.close();
    }
    return status;
}

/** The exit status when the arguments do not ask for a window. */
std::optional<int> answerWithoutWindow(const ParsedArguments& parsed) {
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
    return std::nullopt;
}

/** Whether there may be Qt's own options ("-platform"), which only QApplication removes. */
bool mayHoldOptionsOfQt(int count, const char* const* arguments) {
    return std::any_of(arguments, arguments + count, [](const std::string_view& argument) {
        return argument.size() > 2 && argument[0] == '-' && argument[1] != '-';
    });
}

std::unique_ptr<QApplication> makeApplication(int& argc, char** argv) {
    const EndRequestBlocker blocker;
    const DisplayGuard guard(
        "rataip-viewer: no window can be opened, start it where there is a display", NoDisplay);
    return std::make_unique<QApplication>(argc, argv);
}

}  // namespace

int main(int argc, char* argv[]) {
    rataip::viewer::useParentConsole();
    // First without a window, because help and error messages need no display.
    if (!mayHoldOptionsOfQt(argc, argv)) {
        const QCoreApplication application(argc, argv);
        const std::optional<int> status =
            answerWithoutWindow(rataip::viewer::parseArguments(QCoreApplication::arguments()));
        if (status) {
            return *status;
        }
    }
    const std::unique_ptr<QApplication> application = makeApplication(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("rataip"));
    QCoreApplication::setApplicationName(QStringLiteral("rataip-viewer"));
    // The plugin's diagnostics are for its developers, who can enable them by the environment.
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));

    const ParsedArguments parsed = rataip::viewer::parseArguments(QCoreApplication::arguments());
    if (const std::optional<int> status = answerWithoutWindow(parsed)) {
        return *status;
    }
    return show(parsed.options);
}
