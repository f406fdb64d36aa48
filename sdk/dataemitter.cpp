#include "sdk/dataemitter.h"

namespace TLM::SDK {

namespace {

// Queued connections made by signal name find the types by their registered names.
void registerPayloadTypes() {
    qRegisterMetaType<Sample>();
    qRegisterMetaType<QList<Sample>>();
    qRegisterMetaType<LapHeader>();
    qRegisterMetaType<LivePluginInfo>();
    qRegisterMetaType<SessionInfo>();
    qRegisterMetaType<QSharedPointer<Lap>>();
}

}  // namespace

DataEmitter::DataEmitter(QObject* parent) : QObject(parent) {
    registerPayloadTypes();
}

}  // namespace TLM::SDK
