#pragma once

#include "tools/publisher/namedobjects.h"

#include <cstddef>
#include <limits>
#include <string>
#include <vector>

namespace testsupport {

/**
 * The simulator's named objects from the publishing side, and what no simulator does to them.
 * Operations that fail or that the platform does not know return false.
 */
class PublishedObjects : public publisher::NamedObjects {
public:
    /** Creates the block, or takes the one that exists, with at least `size` bytes. */
    [[nodiscard]] bool createBlock(std::size_t size);

    /** The block, writable; null while there is none. */
    [[nodiscard]] char* block() const;

    /** Bytes that can be written: what is mapped and was not cut off. */
    [[nodiscard]] std::size_t blockSize() const;

    /** Cuts the block off at `size` bytes while readers hold it. */
    bool truncateBlock(std::size_t size);

    /** Cuts the event off to nothing. */
    bool truncateEvent(std::size_t size);

    /** Gives the objects to another user. */
    bool giveBlockTo(unsigned int user);
    bool giveEventTo(unsigned int user);

private:
    std::size_t m_cutTo = std::numeric_limits<std::size_t>::max();
};

/** A receiver of broadcast messages that is open from the start. */
class BroadcastReceiver {
public:
    explicit BroadcastReceiver(int capacity = 8) : m_complaint(m_receiver.open(capacity)) {}

    [[nodiscard]] bool isReady() const { return m_complaint.empty(); }

    /** What has arrived since the last call; gives it the time that it needs on its way. */
    [[nodiscard]] std::vector<publisher::BroadcastMessage> take();

private:
    publisher::BroadcastReceiver m_receiver;
    std::string m_complaint;
};

}  // namespace testsupport
