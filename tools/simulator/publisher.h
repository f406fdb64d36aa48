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
    Publisher();
    ~Publisher();
    Publisher(const Publisher&) = delete;
    Publisher& operator=(const Publisher&) = delete;

    /**
     * Creates the objects with a block of `bytes` bytes. Empty when that worked, else one sentence
     * on why not, and nothing is left behind.
     */
    [[nodiscard]] std::string open(std::size_t bytes);

    /** Empty, or one sentence on what is missing although open() worked. */
    const std::string& remark() const;

    /** The block; may hold what an earlier run left in it. */
    std::span<std::byte> memory() const;

    /** Tells all who wait that a buffer is complete. */
    void signal();

    /** The messages that came in since the last call; never waits. */
    std::vector<BroadcastMessage> takeMessages();

private:
    class Objects;
    std::unique_ptr<Objects> m_objects;
};

}  // namespace simulator
