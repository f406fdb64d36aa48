#include "tools/host/displayguard.h"
#include "tools/host/endrequestblocker.h"
#include "tools/host/interrupt.h"
#include "tools/host/liveplugin.h"
#include "tools/host/sourceconnector.h"
#include "tools/laps/newfile.h"
#include "tools/monitor/account.h"
#include "tools/monitor/console.h"
#include "tools/monitor/goal.h"
#include "tools/monitor/lapsaver.h"
#include "tools/monitor/options.h"
#include "tools/monitor/terminal.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QLoggingCategory>
#include <QTextStream>

#include <cstdio>
#include <memory>
#include <optional>

namespace {

using rataip::host::DisplayGuard;
using rataip::host::EndRequestBlocker;
using rataip::host::Interrupt;
using rataip::host::LivePlugin;
using rataip::host::SourceConnector;
using rataip::monitor::Account;
using rataip::monitor::Console;
using rataip::monitor::ExitStatus;
using rataip::monitor::Goal;
using rataip::monitor::LapSaver;
using rataip::monitor::Options;
using rataip::monitor::ParsedArguments;
using TLM::SDK::DataEmitter;

int exitCode(ExitStatus status) {
    return static_cast<int>(status);
}

int fail(ExitStatus status, const QString& sentence) {
    QTextStream(stderr) << "rataip-monitor: " << sentence << '\n';
    return exitCode(status);
}

int failToPrint() {
    return fail(ExitStatus::NotWritten,
                QStringLiteral("the standard output does not take all that is written to it; send "
                               "it to a place with room"));
}

/** Prints a text and returns the program's exit status. */
int print(const QString& text) {
    QTextStream out(stdout);
    out << text << Qt::flush;
    return out.status() == QTextStream::Ok ? exitCode(ExitStatus::Ok) : failToPrint();
}

LivePlugin::LoadResult loadPlugin(const QString& requestedPath) {
    const rataip::host::PluginFile file =
        rataip::host::findPlugin(requestedPath, QCoreApplication::applicationDirPath());
    if (!file.error.isEmpty()) {
        return {nullptr, file.error + QStringLiteral("; name its file as argument")};
    }
    return LivePlugin::load(file.path);
}

/** Prints the summary. Missing output takes precedence over `status` in the exit status. */
int sumUp(ExitStatus status, Account& account, const Console& console, LapSaver* saver) {
    if (saver != nullptr) {
        saver->finish();
    }
    account.showSummary();
    if (!console.isComplete()) {
        return failToPrint();
    }
    const bool isSaved = saver == nullptr || saver->hasSavedAll();
    return exitCode(isSaved ? status : ExitStatus::NotWritten);
}

/** Runs the plugin until the goal has ended. */
int watch(LivePlugin& plugin, const Options& options) {
    Interrupt interrupt;
    QTextStream out(stdout);
    Console console(out, rataip::monitor::isStandardOutputTerminal());

    TLM::SDK::PluginInterfaceLive& source = plugin.source();
    const DataEmitter& emitter = *source.dataEmitter();
    console.print(QStringLiteral("%1 %2 for %3, from %4")
                      .arg(source.pluginName(), source.pluginVersion(), source.sourceName(),
                           plugin.filePath()));
    Account account(emitter, console);
    std::optional<LapSaver> saver;
    if (!options.exportFolder.isEmpty()) {
        saver.emplace(emitter, console, options.exportFolder);
    }
    SourceConnector connector(source, options.wait);
    Goal goal(options.laps, options.duration);

    QObject::connect(&emitter, &DataEmitter::sendSamples, &goal, &Goal::onTick);
    QObject::connect(&emitter, &DataEmitter::sendTelemetryLap, &goal,
                     [&goal](const QSharedPointer<TLM::SDK::Lap>& lap) {
                         if (!lap->isEmpty()) {
                             goal.onLap();
                         }
                     });
    // Queued, so that the plugin's own message about the disconnection comes first.
    QObject::connect(&connector, &SourceConnector::waiting, &account, &Account::showWaiting,
                     Qt::QueuedConnection);
    QObject::connect(&connector, &SourceConnector::gaveUp, &account, &Account::showNoSimulator,
                     Qt::QueuedConnection);
    QObject::connect(&connector, &SourceConnector::gaveUp, &goal, &Goal::onSourceGone);
    QObject::connect(&interrupt, &Interrupt::requested, &goal, &Goal::onInterrupted);
    // Queued, because the event loop must be running and the plugin's tick over.
    QObject::connect(
        &goal, &Goal::ended, &connector,
        [&](ExitStatus status) {
            connector.stop();
            QCoreApplication::exit(sumUp(status, account, console, saver ? &*saver : nullptr));
        },
        Qt::QueuedConnection);

    source.initialize();
    goal.start();
    connector.start();
    return QCoreApplication::exec();
}

/** Only the pictures of laps need fonts. */
std::unique_ptr<QCoreApplication> makeApplication(int& argc, char** argv) {
    const EndRequestBlocker blocker;
    if (rataip::monitor::asksForExport(argc, argv)) {
        rataip::monitor::doWithoutScreen();
        const DisplayGuard guard("rataip-monitor: laps cannot be drawn here, unset QT_QPA_PLATFORM",
                                 exitCode(ExitStatus::NotWritten));
        return std::make_unique<QGuiApplication>(argc, argv);
    }
    return std::make_unique<QCoreApplication>(argc, argv);
}

}  // namespace

int main(int argc, char* argv[]) {
    const std::unique_ptr<QCoreApplication> application = makeApplication(argc, argv);
    rataip::monitor::prepareStandardOutput();
    // The plugin's diagnostics would clutter the output. The environment can enable them.
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));

    const ParsedArguments parsed = rataip::monitor::parseArguments(QCoreApplication::arguments());
    if (!parsed.error.isEmpty()) {
        return fail(ExitStatus::BadArguments, parsed.error + QStringLiteral(" (see --help)"));
    }
    if (parsed.request == ParsedArguments::Request::ShowHelp) {
        return print(rataip::monitor::helpText());
    }
    if (parsed.request == ParsedArguments::Request::ShowVersion) {
        return print(rataip::monitor::versionText());
    }

    LivePlugin::LoadResult loaded = loadPlugin(parsed.options.pluginPath);
    if (!loaded.plugin) {
        return fail(ExitStatus::PluginUnusable, loaded.error);
    }
    const QString& exportFolder = parsed.options.exportFolder;
    const QString error =
        exportFolder.isEmpty() ? QString() : rataip::laps::tryFolder(exportFolder);
    if (!error.isEmpty()) {
        return fail(ExitStatus::NotWritten,
                    error + QStringLiteral("; name another folder with --export"));
    }
    return watch(*loaded.plugin, parsed.options);
}
