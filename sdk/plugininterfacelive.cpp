#include "sdk/plugininterfacelive.h"

#include <QStringBuilder>

namespace TLM::SDK {

PluginInterfaceLive::~PluginInterfaceLive() = default;

void PluginInterfaceLive::message(const QString& text, int verbose) {
    const QString line = QLatin1Char('[') % sourceName() % QLatin1String(" plugin] ") % text;
    emit emitter.sendMessage(line, verbose);
}

}  // namespace TLM::SDK
