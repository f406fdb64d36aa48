#pragma once

#include "tests/support/childprocess.h"
#include "tests/support/publishercommands.h"
#include "tests/support/testblock.h"

#include <cstdint>
#include <memory>
#include <string>

namespace testsupport {

/**
 * Publishes blocks for a test, in the test's own process or in a second one. Whatever fails is a
 * mistake of the test or of the machine: the program ends with a message, so that a test need not
 * look at every answer; try() leaves the judgement to the caller.
 */
class Publisher {
public:
    enum class Where {
        ThisProcess,
        OtherProcess  // `rataip-test-publisher`, beside the running program
    };

    explicit Publisher(Where where);
    ~Publisher();
    Publisher(const Publisher&) = delete;
    Publisher& operator=(const Publisher&) = delete;

    /** Runs a command of PublisherCommands; what follows "ok " in its answer. */
    std::string command(const std::string& line);

    /** Runs a command; false when it answers an error. */
    bool tryCommand(const std::string& line);

    /** Publishes the block with an event, so that a reader finds both. */
    void publish(TestBlock& block);

    void publishBlock(TestBlock& block);
    void createEvent() { command("event"); }

    /** Writes one field of the block. */
    void poke(std::size_t offset, std::int32_t value);

    void setStatus(std::int32_t status);
    void setTick(int buffer, std::int32_t tickCount);

    /** Completes a buffer with the payload as it is, with a staged snapshot, or with a checked one.
     */
    void complete(int buffer, std::int32_t tickCount);
    void complete(int buffer, std::int32_t tickCount, TestBlock& block);
    void completeChecked(int buffer, std::int32_t tickCount);

    void setSessionText(std::int32_t counter, const std::string& text);

    /** Ends publishing in order: status cleared, objects removed, the second process gone. */
    void quit();

    /**
     * Ends the second process at once; its objects stay as the platform lets them, until this is
     * destroyed.
     */
    void die();

    /** The commands of this process, for what only one process can do. */
    [[nodiscard]] PublisherCommands& commands() { return *m_commands; }

private:
    std::string ask(const std::string& line);

    std::unique_ptr<PublisherCommands> m_commands;
    std::unique_ptr<ChildProcess> m_process;
    bool m_died = false;
};

}  // namespace testsupport
