#include "tools/simulator/runner.h"

#include "tools/simulator/text.h"

#include <algorithm>
#include <chrono>
#include <iostream>
#include <string_view>
#include <thread>

namespace simulator {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// Longest sleep before checking for Ctrl-C and messages.
constexpr milliseconds kSlice(20);

// After a longer delay the missed ticks are not made up for.
constexpr std::chrono::seconds kForgivenDelay(1);

// The results show the last lap within 2 s after it ended.
constexpr double kSecondsAfterLastLap = 3.0;

}  // namespace

Runner::Runner(const Options& options)
    : m_options(options), m_console(options.lockstep || options.commands), m_feed(options) {}

int Runner::run() {
    if (const std::string complaint = start(); !complaint.empty()) {
        std::cerr << "rataip-simulator: " << complaint << '\n';
        return kCouldNotStart;
    }
    if (m_options.lockstep) {
        runInLockstep();
    } else {
        runByClock();
    }
    m_feed.setRunning(false);
    // Wakes readers, which then find the cleared status instead of timing out.
    m_objects.signalEvent();
    m_feed.finish();
    m_log.add(m_feed.takeLaps());
    say("Ended after " + std::to_string(m_feed.world().tick()) + " ticks.");
    return kEndedInOrder;
}

std::string Runner::start() {
    if (std::string complaint = m_objects.claim(m_feed.blockSize()); !complaint.empty()) {
        return complaint;
    }
    if (!m_options.log.empty() && !m_log.open(m_options.log)) {
        return "The log \"" + m_options.log + "\" cannot be written.";
    }
    if (const std::string remark = m_receiver.open(); !remark.empty()) {
        std::cerr << "rataip-simulator: " << remark << '\n';
    }
    m_feed.attach(m_objects.block());
    const World& world = m_feed.world();
    say("Publishing " + std::to_string(world.entrants().size()) + " cars on " +
        world.track().description().displayName + ", " +
        sessionTypeText(world.weekend().plan().type) + (m_options.replay ? " (replay)" : "") +
        ", own car " + std::to_string(world.ownSlot()) + ", seed " +
        std::to_string(m_options.seed) + ".");
    return {};
}

void Runner::runByClock() {
    const std::chrono::duration<double> exactInterval(kSecondsPerTick / m_options.speed);
    // Deadlines count from the start, so that rounding and late wake-ups do not accumulate.
    Clock::time_point start = Clock::now();
    std::int64_t ticksSinceStart = 0;
    while (!ended()) {
        publishTick();
        ++ticksSinceStart;
        while (const std::optional<std::string> line = m_console.nextLine(milliseconds(0))) {
            obey(*line);
        }
        if (m_options.flatOut) {
            continue;
        }
        const auto deadline =
            start + std::chrono::duration_cast<Clock::duration>(exactInterval * ticksSinceStart);
        if (m_stalled || Clock::now() - deadline > kForgivenDelay) {
            m_stalled = false;
            start = Clock::now();
            ticksSinceStart = 0;
            continue;
        }
        while (Clock::now() < deadline && !stopRequested()) {
            std::this_thread::sleep_until(std::min(deadline, Clock::now() + kSlice));
        }
    }
}

void Runner::runInLockstep() {
    while (!ended() && !m_console.inputEnded()) {
        if (const std::optional<std::string> line = m_console.nextLine(kSlice)) {
            obey(*line);
        }
    }
}

void Runner::publishTick() {
    m_feed.publishNextTick();
    m_objects.signalEvent();
    const std::vector<LapRecord> laps = m_feed.takeLaps();
    m_log.add(laps);
    for (const LapRecord& lap : laps) {
        if (lap.car == m_feed.world().ownSlot()) {
            say("Own car: lap " + std::to_string(lap.lap) + ", " + lapKindText(lap.kind) + ", " +
                (lap.complete ? "complete, " : "not complete, ") +
                (lap.seconds ? fixedText(*lap.seconds, 4) + " s." : std::string("no time.")));
        }
    }
}

bool Runner::stopRequested() {
    printMessages();
    return m_console.stopRequested() || m_receiver.isStopRequested();
}

bool Runner::ended() {
    if (m_quit || stopRequested()) {
        return true;
    }
    const World& world = m_feed.world();
    if (m_options.laps > 0 && !m_lapsDrivenAt && world.ownLapsCompleted() >= m_options.laps) {
        m_lapsDrivenAt = world.tick();
    }
    const bool lapsDone =
        m_lapsDrivenAt && secondsOf(world.tick() - *m_lapsDrivenAt) >= kSecondsAfterLastLap;
    const bool timeDone = m_options.duration > 0.0 && secondsOf(world.tick()) >= m_options.duration;
    return lapsDone || timeDone;
}

void Runner::obey(const std::string& line) {
    const std::string_view text = trimmed(line);
    const std::size_t blank = std::min(text.find(' '), text.size());
    const std::string_view word = text.substr(0, blank);
    const std::string argument(trimmed(text.substr(blank)));
    double seconds = 0.0;
    if (word.empty() || word == "step") {
        step(argument);
    } else if (word == "quit" && argument.empty()) {
        m_quit = true;
    } else if (word == "stall" && readNumber(argument, seconds) && seconds >= 0.0) {
        stall(seconds);
    } else if (word == "status" && (argument == "on" || argument == "off")) {
        m_feed.setRunning(argument == "on");
        m_objects.signalEvent();
        answer("ok");
    } else {
        answer("unknown command: " + std::string(text));
    }
}

void Runner::step(const std::string& count) {
    long long ticks = 1;
    if (!m_options.lockstep || (!count.empty() && (!readInteger(count, ticks) || ticks < 1))) {
        answer(m_options.lockstep ? "unknown command: step " + count
                                  : "step is for lock step only");
        return;
    }
    for (; ticks > 0 && !ended(); --ticks) {
        publishTick();
    }
    answer("tick " + std::to_string(m_feed.tickCount()));
}

void Runner::stall(double seconds) {
    rest(seconds);
    m_stalled = true;
    answer("ok");
}

void Runner::rest(double seconds) {
    const auto end = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                        std::chrono::duration<double>(seconds));
    while (Clock::now() < end && !stopRequested()) {
        std::this_thread::sleep_until(std::min(end, Clock::now() + kSlice));
    }
}

void Runner::answer(const std::string& text) {
    if (!m_options.quiet) {
        std::cout << text << std::endl;
    }
}

void Runner::say(const std::string& text) {
    answer(text);
}

void Runner::printMessages() {
    for (const publisher::BroadcastMessage& message : m_receiver.take()) {
        const auto word = static_cast<std::uint64_t>(message.wParam);
        const auto code = static_cast<std::uint16_t>(word);
        const auto argument = static_cast<std::int16_t>(static_cast<std::uint16_t>(word >> 16U));
        say("Broadcast message " + std::to_string(code) + " (" + std::to_string(argument) + ", " +
            std::to_string(message.lParam) + "), number " + std::to_string(message.number) + ".");
    }
}

}  // namespace simulator
