#include "tests/support/publisher.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace testsupport {

namespace {

constexpr int kAnswerTime = 20'000;  // milliseconds; machines are slow at times
constexpr std::size_t kShownCharacters = 60;

[[noreturn]] void failure(const std::string& line, const std::string& answer) {
    std::fprintf(stderr, "Publisher: \"%s\" was answered with \"%s\"\n",
                 line.substr(0, kShownCharacters).c_str(), answer.c_str());
    std::abort();
}

}  // namespace

Publisher::Publisher(Where where) {
    if (where == Where::ThisProcess) {
        m_commands = std::make_unique<PublisherCommands>();
        return;
    }
    m_process = std::make_unique<ChildProcess>();
    const std::string program = siblingProgram("rataip-test-publisher");
    if (!m_process->start(program, {})) {
        failure(program, "cannot be started");
    }
}

Publisher::~Publisher() {
    if (m_process && m_process->isRunning()) {
        quit();
    }
    if (m_died) {
        PublishedObjects::removeLeftovers();
    }
}

std::string Publisher::ask(const std::string& line) {
    if (m_commands) {
        return m_commands->run(line);
    }
    if (!m_process->writeLine(line)) {
        return "error the publisher has ended";
    }
    return m_process->readLine(kAnswerTime).value_or("error no answer");
}

std::string Publisher::command(const std::string& line) {
    const std::string answer = ask(line);
    if (answer.rfind("ok", 0) != 0) {
        failure(line, answer);
    }
    return answer.substr(std::min<std::size_t>(answer.size(), 3));
}

bool Publisher::tryCommand(const std::string& line) {
    return ask(line).rfind("ok", 0) == 0;
}

void Publisher::publish(TestBlock& block) {
    publishBlock(block);
    createEvent();
}

void Publisher::publishBlock(TestBlock& block) {
    command("block " + toHex(block.bytes()));
}

void Publisher::poke(std::size_t offset, std::int32_t value) {
    command("poke " + std::to_string(offset) + ' ' + std::to_string(value));
}

void Publisher::setStatus(std::int32_t status) {
    command("status " + std::to_string(status));
}

void Publisher::setTick(int buffer, std::int32_t tickCount) {
    command("tick " + std::to_string(buffer) + ' ' + std::to_string(tickCount));
}

void Publisher::complete(int buffer, std::int32_t tickCount) {
    command("complete " + std::to_string(buffer) + ' ' + std::to_string(tickCount));
}

void Publisher::complete(int buffer, std::int32_t tickCount, TestBlock& block) {
    command("complete " + std::to_string(buffer) + ' ' + std::to_string(tickCount) + ' ' +
            toHex(block.snapshot(), static_cast<std::size_t>(block.snapshotLength())));
}

void Publisher::completeChecked(int buffer, std::int32_t tickCount) {
    command("checked " + std::to_string(buffer) + ' ' + std::to_string(tickCount));
}

void Publisher::setSessionText(std::int32_t counter, const std::string& text) {
    command("session " + std::to_string(counter) + ' ' + toHex(text.data(), text.size()));
}

void Publisher::quit() {
    if (m_commands) {
        static_cast<void>(m_commands->run("stop"));
        static_cast<void>(m_commands->run("status 0"));
        m_commands = std::make_unique<PublisherCommands>();
        return;
    }
    static_cast<void>(m_process->writeLine("quit"));
    if (!m_process->waitForExit(kAnswerTime)) {
        failure("quit", "nothing, and it did not end");
    }
}

void Publisher::die() {
    if (!m_process) {
        failure("die", "that would be the end of the test itself");
    }
    static_cast<void>(m_process->writeLine("die"));
    if (!m_process->waitForExit(kAnswerTime)) {
        failure("die", "nothing, and it did not end");
    }
    m_died = true;
}

}  // namespace testsupport
