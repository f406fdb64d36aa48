#pragma once

#include <QObject>
#include <QTimer>

#include <chrono>
#include <optional>

namespace rataip::monitor {

/** How the program ends; part of what scripts rely on. */
enum class ExitStatus {
    Ok = 0,              // got what was asked for
    BadArguments = 1,    // the command line makes no sense
    PluginUnusable = 2,  // the plugin was not found or does not fit
    NoData = 3,          // no data of a simulator ever arrived
    FellShort = 4,       // data arrived, but it ended before the laps or the time asked for
    NotWritten = 5,      // something is missing of the laps to save or of the output, whatever else
};

/**
 * Knows what the user asked for and tells, once, when and how the program is to end.
 *
 * With a number of laps it is got when they are there. With a time alone it is got when the time
 * is over and data has arrived. With neither, watching until the user or the simulator ends it is
 * all that was asked, as long as data has arrived.
 */
class Goal : public QObject {
    Q_OBJECT

public:
    Goal(std::optional<int> laps, std::optional<std::chrono::milliseconds> duration);

    /** The time begins. */
    void start();

    /** Samples of a tick have arrived. */
    void onTick() { m_hasData = true; }

    /** A finished lap has arrived. */
    void onLap();

    /** The user, or the system, asks the program to end. */
    void onInterrupted();

    /** There is no simulator and nobody waits for it any longer. */
    void onSourceGone();

signals:
    /**
     * Emitted once, and to queued connections too: it may come in the middle of a plugin's tick.
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
