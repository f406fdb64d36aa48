#pragma once

#include "tools/publisher/namedobjects.h"
#include "tools/simulator/console.h"
#include "tools/simulator/feed.h"
#include "tools/simulator/laplog.h"
#include "tools/simulator/options.h"

#include <optional>
#include <string>

namespace simulator {

/** Exit statuses of the program. */
enum ExitStatus { kEndedInOrder = 0, kBadOptions = 1, kCouldNotStart = 2 };

/**
 * Runs the simulator as a program: publishes in real time or step by step, executes commands,
 * writes the log, and removes its objects at the end.
 */
class Runner {
public:
    explicit Runner(const Options& options);

    /** Runs until the requested end. Returns the exit status. */
    int run();

private:
    std::string start();
    void runByClock();
    void runInLockstep();
    void publishTick();
    bool stopRequested();
    bool ended();
    void obey(const std::string& line);
    void step(const std::string& count);
    void stall(double seconds);
    void rest(double seconds);
    void answer(const std::string& text);
    void say(const std::string& text);
    void printMessages();

    Options m_options;
    Console m_console;
    Feed m_feed;
    publisher::NamedObjects m_objects;
    publisher::BroadcastReceiver m_receiver;
    LapLog m_log;
    bool m_quit = false;
    bool m_stalled = false;  // since the clock was last read
    std::optional<Tick> m_lapsDrivenAt;
};

}  // namespace simulator
