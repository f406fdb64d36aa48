#pragma once

#include "benchmarks/obvious/reader.h"
#include "sdk/dataemitter.h"
#include "sdk/liveplugininfo.h"

#include <vector>

namespace obvious {

/**
 * The plugin's connection and tick in the obvious way, over the same link. It has no timer and
 * never disconnects: only ticks that find a snapshot are measured.
 */
class Plugin {
public:
    Plugin();

    TLM::SDK::DataEmitter* dataEmitter() { return &m_emitter; }

    /** Reads the session text and announces the cars; false when there is no fresh snapshot. */
    bool connectToSource();

    /** False when there was no new snapshot. */
    bool tick();

private:
    void updateCarList();
    void deliver();

    TLM::SDK::DataEmitter m_emitter;
    TLM::SDK::LivePluginInfo m_pluginInfo;
    Reader m_reader;
    std::vector<char> m_dataBuffer;
    int m_lastSessionInfoUpdate = -1;
};

}  // namespace obvious
