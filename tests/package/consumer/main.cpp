// A host built only from the package: consumer PLUGIN VERSION
#include "sdk/carinfo.h"
#include "sdk/carstatus.h"
#include "sdk/channel.h"
#include "sdk/dataemitter.h"
#include "sdk/dynamicdata.h"
#include "sdk/interfaceid.h"
#include "sdk/lap.h"
#include "sdk/lapheader.h"
#include "sdk/liveplugininfo.h"
#include "sdk/plugininterfacelive.h"
#include "sdk/sample.h"
#include "sdk/sessioninfo.h"
#include "sdk/utilities.h"
#include "sdk/value.h"

#include <QCoreApplication>
#include <QDataStream>
#include <QPluginLoader>
#include <QTextStream>

namespace {

constexpr qsizetype kCarSlots = 64;

int fail(const QString& sentence) {
    QTextStream(stderr) << sentence << '\n';
    return 1;
}

// Calls code of the static library, not of the plugin.
bool readsSamplesBack() {
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out << QList<TLM::SDK::Sample>(kCarSlots);
    QDataStream in(bytes);
    QList<TLM::SDK::Sample> samples;
    in >> samples;
    return samples.size() == kCarSlots;
}

}  // namespace

int main(int argc, char* argv[]) {
    const QCoreApplication application(argc, argv);
    QPluginLoader loader(application.arguments().value(1));
    auto* source = qobject_cast<TLM::SDK::PluginInterfaceLive*>(loader.instance());
    if (source == nullptr) {
        return fail(loader.errorString());
    }
    qsizetype cars = 0;
    QObject::connect(source->dataEmitter(), &TLM::SDK::DataEmitter::sendCarListChanged,
                     &application,
                     [&cars](const TLM::SDK::LivePluginInfo& info) { cars = info.cars.size(); });
    source->initialize();
    if (cars != kCarSlots) {
        return fail(QStringLiteral("the plugin announced %1 cars").arg(cars));
    }
    const QString version = application.arguments().value(2);
    if (!version.startsWith(source->pluginVersion() + u'.')) {
        return fail(QStringLiteral("the plugin of package %1 says that it is %2")
                        .arg(version, source->pluginVersion()));
    }
    return readsSamplesBack() ? 0 : fail(QStringLiteral("samples were lost in a stream"));
}
