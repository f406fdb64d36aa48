#pragma once

#include "irsdk/blockmemory.h"
#include "irsdk/irsdk.h"

#include <cstddef>
#include <cstdint>
#include <memory>

/**
 * What the link needs of the operating system, with one source a platform. Block and event are
 * opened with no more than the rights to read and to wait; only the broadcast channel is written
 * to. Every failure of these two is a value, a broadcast that fails is lost; nothing is printed.
 */
namespace irsdk {

/**
 * Bytes of the largest block that is mapped. Simulators publish one or two MiB. The format itself,
 * with offsets of 32 bits, goes up to 2 GiB, and an object without contents can state any size; but
 * the table, the text and two snapshots are copied out of the block, each of which may be as long
 * as all of it, and the host must survive that.
 */
inline constexpr std::size_t kLargestBlock = std::size_t{256} << 20;

/** The simulator's block: an object that is found by its name, then mapped whole. */
class BlockObject {
public:
    BlockObject();
    ~BlockObject();
    BlockObject(const BlockObject&) = delete;
    BlockObject& operator=(const BlockObject&) = delete;

    /** Finds the object; None when it is open afterwards. */
    [[nodiscard]] irsdk_Error open();
    [[nodiscard]] bool isOpen() const;

    /** Maps the open object; None when it is mapped afterwards. */
    [[nodiscard]] irsdk_Error map();
    [[nodiscard]] bool isMapped() const { return m_memory.size() > 0; }

    /** The mapped bytes; empty while not mapped. */
    [[nodiscard]] const BlockMemory& memory() const { return m_memory; }

    /**
     * Copies `length` bytes, which lie inside the block, from `offset` on; false when the object
     * no longer has them all. It never faults, whatever the simulator does to its object. What is
     * copied is read once, each aligned 32-bit word in one piece, after the reads of the call
     * before and before those of the call after; within one call nothing is promised of the order.
     */
    [[nodiscard]] bool read(std::int64_t offset, std::size_t length, void* into) const;

    /**
     * Whether the object still has all the bytes that were mapped. Asked after a read, it tells
     * also of a cut that fell into the read and left zeros in it.
     */
    [[nodiscard]] bool isWhole() const;

    /** Whether the object can no longer be found by its name, so that nobody will write to it. */
    [[nodiscard]] bool isAbandoned() const;

    void close();

private:
    struct Handle;
    std::unique_ptr<Handle> m_handle;
    BlockMemory m_memory;
};

/** The event that the simulator signals for every completed buffer. */
class DataValidEvent {
public:
    DataValidEvent();
    ~DataValidEvent();
    DataValidEvent(const DataValidEvent&) = delete;
    DataValidEvent& operator=(const DataValidEvent&) = delete;

    /** Finds the event; None when it is open afterwards. */
    [[nodiscard]] irsdk_Error open();
    [[nodiscard]] bool isOpen() const;

    /** Prepares a wait, before the caller looks for data: a later completion will end the wait. */
    void arm();

    /** Prepares the wait anew after a look that consumed a completion; the caller looks again. */
    void rearm();

    /** Waits until the event is signalled, at most `timeOut` milliseconds (above 0). */
    void wait(int timeOut);

    /**
     * Waits on, for the rest of the caller's time, when the wait after rearm() may have been ended
     * by the very completion that was consumed. False, at once, where the platform has no such
     * wait.
     */
    [[nodiscard]] bool waitOn(int timeOut);

    void close();

private:
    struct Handle;
    std::unique_ptr<Handle> m_handle;
};

/** Puts the thread to sleep for `milliseconds` (above 0). */
void sleepFor(int milliseconds);

/** Seconds of the system's calendar clock, in 64 bits. */
std::int64_t systemSeconds();

/** Fetches the number of the simulator's broadcast message; 0 if there is none. */
unsigned int registerBroadcastMessage();

/**
 * Sends the broadcast message without waiting for anyone: on Windows to every window at the top, on
 * Linux to the one queue of its name, if it exists and has room.
 */
void sendBroadcastMessage(unsigned int message, std::int64_t wParam, std::int64_t lParam);

}  // namespace irsdk
