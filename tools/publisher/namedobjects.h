#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace publisher {

/** How a data-valid event behaves where the platform makes a difference. */
enum class EventKind {
    AutoReset,   // a signal is kept until one wait takes it
    ManualReset  // pulsed: a signal reaches those who wait at that moment
};

/**
 * The block and the data-valid event from the publishing side, with one source a platform. Only
 * their own user may open them. What was created is removed by the destructor, as by an orderly
 * end.
 *
 * There is one publisher a machine and user at a time: a program that publishes MUST claim() the
 * objects. createBlock() and createEvent() are for whoever knows that nobody else publishes.
 */
class NamedObjects {
public:
    NamedObjects();
    ~NamedObjects();
    NamedObjects(const NamedObjects&) = delete;
    NamedObjects& operator=(const NamedObjects&) = delete;

    /**
     * Creates both objects, with a block of `bytes` bytes, and keeps others from it; what a crashed
     * publisher left behind is taken over. To be called once. Empty when that worked, else one
     * sentence on why not: then this is good for nothing but being destroyed.
     */
    [[nodiscard]] std::string claim(std::size_t bytes);

    /** Creates the block, or takes the one that exists, with at least `bytes` bytes. */
    [[nodiscard]] bool createBlock(std::size_t bytes);
    [[nodiscard]] bool createEvent(EventKind kind = EventKind::AutoReset);

    /** The block; empty while there is none. It may hold what an earlier publisher left in it. */
    [[nodiscard]] std::span<std::byte> block() const;

    /** Tells all who wait that a buffer is complete; false when there is no event. */
    bool signalEvent();

    /** Takes the name away; readers keep what they hold. */
    void removeBlock();
    void removeEvent();

    /** Removes what a publisher that was killed has left behind, where the platform leaves it. */
    static void removeLeftovers();

private:
    struct Objects;
    std::unique_ptr<Objects> m_objects;
};

/** A command that a client has broadcast to the simulator. */
struct BroadcastMessage {
    std::uint64_t number = 0;
    std::int64_t wParam = 0;
    std::int64_t lParam = 0;
};

/** Receives broadcast messages as a simulator does, until it is destroyed. */
class BroadcastReceiver {
public:
    BroadcastReceiver();
    ~BroadcastReceiver();
    BroadcastReceiver(const BroadcastReceiver&) = delete;
    BroadcastReceiver& operator=(const BroadcastReceiver&) = delete;

    /**
     * Lets messages in from now on; `capacity` of them are kept where the platform sets a limit.
     * Empty when that worked, else one sentence on why not: then none ever come.
     */
    [[nodiscard]] std::string open(int capacity = 10);

    /** The messages that came in since the last call; never waits. */
    [[nodiscard]] std::vector<BroadcastMessage> take();

    /** Whether the wish that the program end has come in by the way of the messages. */
    [[nodiscard]] bool isStopRequested() const;

private:
    struct Inbox;
    std::unique_ptr<Inbox> m_inbox;
};

}  // namespace publisher
