#pragma once

#include "tools/publisher/block.h"
#include "tools/simulator/options.h"
#include "tools/simulator/playback.h"
#include "tools/simulator/variabletable.h"
#include "tools/simulator/world.h"

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace simulator {

/**
 * The simulator without the operating system: moves the world tick by tick and publishes it in a
 * block of memory. The same options give the same bytes at every tick.
 */
class Feed {
public:
    explicit Feed(const Options& options);

    /** Bytes that the block needs. */
    std::size_t blockSize() const { return m_layout.size; }

    /** Lays out the block in `memory` with the session text and without a snapshot. */
    void attach(std::span<std::byte> memory);

    /** Moves the world by a tick and publishes it. Call attach() first. */
    void publishNextTick();

    void setRunning(bool running) { m_block->setRunning(running); }

    /** Ends the laps being driven, for the log. */
    void finish() { m_world.finish(); }

    std::vector<LapRecord> takeLaps() { return m_world.takeLaps(); }

    const World& world() const { return m_world; }
    const Playback& playback() const { return m_playback; }
    const VariableTable& table() const { return m_table; }

    /** Snapshots published so far. */
    std::int32_t tickCount() const { return m_block ? m_block->tickCount() : 0; }

private:
    void refreshText();

    Options m_options;
    World m_world;
    Playback m_playback;
    VariableTable m_table;
    publisher::BlockLayout m_layout;
    std::vector<std::byte> m_snapshot;
    std::optional<publisher::BlockWriter> m_block;
    int m_shownRevision = 0;
};

}  // namespace simulator
