#include "tools/simulator/feed.h"

#include "tools/simulator/clock.h"
#include "tools/simulator/sessiontext.h"

namespace simulator {

namespace {

constexpr std::uint64_t kPlaybackStream = 8;

// Runs with the usual options all have a block of this size: where a reader still holds the block
// of an earlier run, Windows hands out that very block again.
constexpr std::size_t kUsualSize = std::size_t{1024} * 1024;

publisher::BlockFacts factsOf(const VariableTable& table, const Options& options) {
    return {.tickRate = kTicksPerSecond,
            .bufferCount = options.bufferCount,
            .bufferLength = table.bufferLength(),
            .padding = static_cast<std::size_t>(options.padBuffer),
            .leastSize = kUsualSize};
}

}  // namespace

Feed::Feed(const Options& options)
    : m_options(options),
      m_world(options),
      m_playback(options.replay, m_world.track().lapTime(),
                 Random(options.seed).stream(kPlaybackStream)),
      m_table(options),
      m_layout(factsOf(m_table, options), m_table.variables().size()),
      m_snapshot(m_table.bufferLength()) {}

void Feed::attach(std::span<std::byte> memory) {
    m_block.emplace(memory, m_layout, m_table.headers());
    m_shownRevision = 0;
    refreshText();
    m_block->setRunning(true);
}

void Feed::publishNextTick() {
    m_playback.advance();
    for (int step = 0; step < m_playback.speed(); ++step) {
        m_world.advance();
    }
    refreshText();
    m_table.write({m_world, m_playback}, m_snapshot);
    m_block->publish(m_snapshot);
}

void Feed::refreshText() {
    if (m_shownRevision == m_world.revision() && !m_options.sessionInfoEveryTick) {
        return;
    }
    m_shownRevision = m_world.revision();
    m_block->showText(sessionText(m_world, m_options.replay));
}

}  // namespace simulator
