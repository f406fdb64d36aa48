#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace testsupport {

/** How a data-valid event behaves where the platform makes a difference. */
enum class EventKind {
    AutoReset,   // a signal is kept until one wait takes it
    ManualReset  // pulsed: a signal reaches those who wait at that moment
};

/**
 * The simulator's named objects from the publishing side, with one source a platform. Operations
 * that fail or that the platform does not know return false. Objects that were created are removed
 * by the destructor, as by an orderly end.
 */
class PublishedObjects {
public:
    PublishedObjects();
    ~PublishedObjects();
    PublishedObjects(const PublishedObjects&) = delete;
    PublishedObjects& operator=(const PublishedObjects&) = delete;

    /** Removes what a publisher that was killed has left behind, where the platform leaves it. */
    static void removeLeftovers();

    /** Creates the block, or takes the one that exists, with at least `size` bytes. */
    [[nodiscard]] bool createBlock(std::size_t size);
    [[nodiscard]] bool createEvent(EventKind kind = EventKind::AutoReset);

    /** The block, writable; null while there is none. */
    [[nodiscard]] char* block() const;
    [[nodiscard]] std::size_t blockSize() const;

    /** Tells that a buffer is complete. */
    bool signalEvent();

    /** Cuts the block off at `size` bytes while readers hold it. */
    bool truncateBlock(std::size_t size);

    /** Takes the block's name away; readers keep what they hold. */
    void removeBlock();
    void removeEvent();

    /** Cuts the event off to nothing. */
    bool truncateEvent();

    /** Gives the objects to another user. */
    bool giveBlockTo(unsigned int user);
    bool giveEventTo(unsigned int user);

private:
    struct Objects;
    std::unique_ptr<Objects> m_objects;
};

/** A message that reached the receiver. */
struct BroadcastMessage {
    std::uint64_t number = 0;
    std::int64_t wParam = 0;
    std::int64_t lParam = 0;
};

/**
 * Receives broadcast messages as a simulator does, until it is destroyed. `capacity` is the number
 * of messages it keeps, where the platform sets a limit.
 */
class BroadcastReceiver {
public:
    explicit BroadcastReceiver(int capacity = 8);
    ~BroadcastReceiver();
    BroadcastReceiver(const BroadcastReceiver&) = delete;
    BroadcastReceiver& operator=(const BroadcastReceiver&) = delete;

    [[nodiscard]] bool isReady() const;

    /** Everything that has arrived since the last call. */
    [[nodiscard]] std::vector<BroadcastMessage> take();

private:
    struct Queue;
    std::unique_ptr<Queue> m_queue;
};

}  // namespace testsupport
