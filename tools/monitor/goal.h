#pragma once

#include <QObject>
#include <QTimer>

#include <chrono>
#include <optional>

namespace rataip::monitor {

/** How the program ended. Scripts rely on the numbers. */
enum class ExitStatus {
    Ok = 0,              // reached what was asked for
    BadArguments = 1,    // the command line makes no sense
    PluginUnusable = 2,  // the plugin was not found or cannot be used
    NoData = 3,          // no data of a simulator ever arrived
    FellShort = 4,       // data arrived, but it ended before the laps or the time asked for
    NotWritten = 5,      // laps or output could not be written; takes precedence over all others
};

/**
 * Knows what the user asked for and reports once when and how the program has to end.
 *
 * With a number of laps, the goal is reached when they have arrived. With only a duration, it is
 * reached when the time is over and data has arrived. With neither, it is reached when the user or
 * the simulator ends the run and data has arrived.
 */
class Goal : public QObject {
    Q_OBJECT

public:
    Goal(std::optional<int> laps, std::optional<std::chrono::milliseconds> duration);

    /** Starts the time. */
    void start();

    /** The samples of a tick have arrived. */
    void onTick() { m_hasData = true; }

    /** A finished lap has arrived. */
    void onLap();

    /** The user, or the system, asks the program to end. */
    void onInterrupted();

    /** There is no simulator and the program stops waiting. */
    void onSourceGone();

signals:
    /**
     * Emitted once, possibly in the middle of a plugin's tick. Connect queued to stop the plugin.
     */
    void ended(rataip::monitor::ExitStatus status);

private:
    void onTimeOver();
    void endEarly();
    void end(ExitStatus status);

    std::optional<int> m_laps;
    std::optional<std::chrono::milliseconds> m_duration;
    QTimer m_timeOver;
    int m_lapsArrived = 0;
    bool m_hasData = false;
    bool m_hasEnded = false;
};

}  // namespace rataip::monitor
