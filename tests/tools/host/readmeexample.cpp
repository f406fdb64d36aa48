#include "sdk/plugininterfacelive.h"

#include <QCoreApplication>
#include <QDebug>
#include <QPluginLoader>

int main(int argc, char* argv[]) {
    QCoreApplication application(argc, argv);
    QPluginLoader loader(application.arguments().value(1));
    auto* source = qobject_cast<TLM::SDK::PluginInterfaceLive*>(loader.instance());
    if (source == nullptr) {
        qWarning() << "No live plugin:" << loader.errorString();
        return 1;
    }

    using TLM::SDK::DataEmitter;
    const DataEmitter* emitter = source->dataEmitter();
    QObject::connect(emitter, &DataEmitter::sendMessage, &application,
                     [](const QString& text) { qInfo().noquote() << text; });
    QObject::connect(emitter, &DataEmitter::sendTelemetryLap, &application,
                     [](const QSharedPointer<TLM::SDK::Lap>& lap) {
                         // A lap without a time has 59:59.000, one without samples none at all.
                         const QTime time = lap->lapTime();
                         QString text = QStringLiteral("no time");
                         if (time.isValid() && time != QTime(0, 59, 59)) {
                             text = time.toString(Qt::ISODateWithMs);
                         }
                         qInfo().noquote() << lap->driverName() << text << lap->size();
                     });
    QObject::connect(emitter, &DataEmitter::sendNotConnected, &application,
                     [] { QCoreApplication::exit(1); });
    QObject::connect(emitter, &DataEmitter::sendDisconnected, &application,
                     [] { QCoreApplication::exit(0); });

    source->initialize();
    QMetaObject::invokeMethod(
        &application, [source] { source->connectToSource(); }, Qt::QueuedConnection);
    return application.exec();
}
