#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace simulator {

/** A command that a client has sent to the simulator. */
struct BroadcastMessage {
    std::int64_t message;
    std::int64_t wparam;
    std::int64_t lparam;
};

/**
 * The simulator's named objects on this machine: the block, the data-valid event and the way by
 * which broadcast messages come in. There is one publisher a machine and user at a time; what a
 * crashed one left behind is taken over. The destructor removes the objects.
 */
class Publisher {
public:
    /** This platform's; it has created nothing yet. */
    static std::unique_ptr<Publisher> make();

    virtual ~Publisher() = default;
    Publisher(const Publisher&) = delete;
    Publisher& operator=(const Publisher&) = delete;

    /**
     * Creates the objects with a block of `bytes` bytes; to be called once. Empty when that worked,
     * else one sentence on why not: then the publisher is good for nothing but being destroyed.
     */
    [[nodiscard]] virtual std::string open(std::size_t bytes) = 0;

    /** Empty, or one sentence on what is missing although open() worked. */
    virtual const std::string& remark() const = 0;

    /** The block; may hold what an earlier run left in it. */
    virtual std::span<std::byte> memory() const = 0;

    /** Tells all who wait that a buffer is complete. */
    virtual void signal() = 0;

    /** The messages that came in since the last call; never waits. */
    virtual std::vector<BroadcastMessage> takeMessages() = 0;

    /** Whether the wish that the program end has come in by the way of the messages. */
    virtual bool stopRequested() const { return false; }

protected:
    Publisher() = default;
};

}  // namespace simulator
