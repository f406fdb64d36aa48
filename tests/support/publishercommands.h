#pragma once

#include "tests/support/publishedobjects.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

namespace testsupport {

/**
 * The commands of the test publisher, one line each. The program `rataip-test-publisher` runs them
 * in a process of its own; a test that needs no second process runs them in its own.
 *
 *     block HEX               create the block with these bytes, or write them into the present one
 *     empty SIZE              create the block with that many zero bytes; 0 if the platform can
 *     event [manual]          create the data-valid event
 *     poke OFFSET VALUE       write a 32-bit integer into the block
 *     peek OFFSET             answer a 32-bit integer of the block
 *     bytes OFFSET HEX        write bytes into the block
 *     status VALUE            write the status bits
 *     tick BUFFER COUNT       set a buffer's tick count, nothing else
 *     complete BUFFER COUNT [HEX]
 *                             mark the buffer, write its payload, set its count, signal the event
 *     checked BUFFER COUNT    the same with a checked snapshot as payload
 *     signal                  signal the event
 *     session COUNTER HEX     write the session text with a terminating zero, then its counter
 *     write BUFFERS           overwrite the first buffers in turn with checked snapshots, at full
 *                             speed, until `stop`
 *     every MICROSECONDS BUFFERS
 *                             the same with a pause after each snapshot
 *     bump                    increment the session text's counter, at full speed, until `stop`
 *     flip OFFSET             change one letter of the block, at full speed, until `stop`
 *     stop                    end writing; answers the number of rounds
 *     truncate SIZE           cut the block off
 *     truncate-event SIZE     cut the event off at SIZE bytes
 *     unlink [event]          remove the name of the block, or of the event
 *     chown USER [event]      give the block, or the event, to another user
 *     die                     end and leave everything as it is (the program only)
 *     quit                    clear the status, remove the objects and end (the program only)
 *
 * The answer is "ok", "ok VALUE", or "error" with the reason.
 */
class PublisherCommands {
public:
    PublisherCommands() = default;
    ~PublisherCommands();
    PublisherCommands(const PublisherCommands&) = delete;
    PublisherCommands& operator=(const PublisherCommands&) = delete;

    [[nodiscard]] std::string run(const std::string& line);

    [[nodiscard]] PublishedObjects& objects() { return m_objects; }

private:
    using Words = std::vector<std::string>;

    std::string runWords(const Words& words);
    std::string createBlock(const Words& words);
    std::string createEmptyBlock(const Words& words);
    std::string createEvent(const Words& words);
    std::string poke(const Words& words);
    std::string peek(const Words& words);
    std::string writeBytes(const Words& words);
    std::string setStatus(const Words& words);
    std::string setTick(const Words& words);
    std::string complete(const Words& words);
    std::string completeChecked(const Words& words);
    std::string signal(const Words& words);
    std::string setSession(const Words& words);
    std::string writeAtFullSpeed(const Words& words);
    std::string writeWithPauses(const Words& words);
    std::string bumpSessionCounter(const Words& words);
    std::string flipByte(const Words& words);
    std::string stop(const Words& words);
    std::string truncate(const Words& words);
    std::string truncateEvent(const Words& words);
    std::string unlink(const Words& words);
    std::string chown(const Words& words);

    template <typename Round>
    std::string startRounds(Round round);
    std::string startWriting(std::int32_t buffers, std::chrono::microseconds pause);
    void stopWriter();
    std::int32_t newestTickCount(std::int32_t buffers) const;

    bool overwrite(std::int32_t buffer, std::int32_t tickCount, const std::vector<char>& payload);
    std::int32_t field(std::size_t offset) const;
    bool setField(std::size_t offset, std::int32_t value);
    bool writeText(const std::vector<char>& text, std::int32_t counter);
    bool fits(std::int64_t offset, std::size_t length) const;

    PublishedObjects m_objects;
    std::thread m_writer;
    std::atomic<bool> m_writing{false};
    std::atomic<std::int64_t> m_rounds{0};
};

/** Bytes as command arguments: two hexadecimal digits each, "-" for no bytes. */
[[nodiscard]] std::string toHex(const void* bytes, std::size_t count);
[[nodiscard]] std::string toHex(const std::vector<char>& bytes);

}  // namespace testsupport
