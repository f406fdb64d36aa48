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
                         qInfo() << lap->driverName() << lap->lapTime() << lap->size();
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
