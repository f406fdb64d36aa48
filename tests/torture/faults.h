#pragma once

#include "tests/torture/host.h"
#include "tests/torture/lapledger.h"
#include "tests/torture/options.h"
#include "tests/torture/resourcelog.h"
#include "tests/torture/simulatorrun.h"
#include "tests/torture/table.h"
#include "tools/host/sourceconnector.h"

#include <QTemporaryDir>

#include <chrono>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace torture {

/**
 * A host whose simulator is killed, truncated, stalled, stopped and started with another layout,
 * again and again. Between the faults it runs in lock step, so that every lap can be accounted for.
 */
class FaultTest {
public:
    using Clock = std::chrono::steady_clock;

    FaultTest(const Options& options, Host& host);

    /** Injects faults until `end`, and until the simulator was killed often enough. */
    void run(Clock::time_point end);

    void addTo(Table& table) const;

private:
    /** What ends a run of the simulator. */
    enum class Fault { Kill, Cut };

    /** Layouts that keep the names in the reader's table valid, and one that does not. */
    enum class Layout { Usual, Other, Shuffled };

    void driveUntilAFault();
    void goOnWith(Layout layout);
    void begin(Layout layout);
    void finish();
    void driveToTheFirstLap();
    void drive(int ticks);
    void step(bool joins);
    void switchStatus();
    void removeObjects();
    void cutObjects();
    void comeAndGo();
    void stall();
    void end(Fault fault);
    void awaitConnection();
    void awaitDisconnection();
    template <typename Done>
    bool waitFor(Done done, std::chrono::milliseconds atMost);
    void note(const std::string& problem);
    [[nodiscard]] bool isComparable() const;

    [[nodiscard]] std::vector<std::string> argumentsOf(Layout layout);
    [[nodiscard]] int pick(int count);
    [[nodiscard]] bool happens(int onceIn) { return pick(onceIn) == 0; }
    [[nodiscard]] std::chrono::milliseconds between(int least, int most);

    const Options& m_options;
    std::mt19937 m_random;
    QTemporaryDir m_folder;
    Host& m_host;
    rataip::host::SourceConnector m_connector;
    std::unique_ptr<SimulatorRun> m_run;  // never null after begin()
    LapLedger m_ledger;
    LapBalance m_balance;
    ResourceLog m_resources;
    Layout m_layout = Layout::Usual;
    bool m_hasGap = false;      // ticks were missed since the last snapshot in the ledger
    bool m_isNameless = false;  // the run's objects have lost their names
    bool m_stallIsDue = false;

    int m_runs = 0;
    int m_kills = 0;
    int m_killsInMidWrite = 0;  // of these
    int m_cuts = 0;
    int m_stalls = 0;
    int m_removals = 0;
    int m_statusSwitches = 0;
    int m_comings = 0;
    int m_shuffles = 0;
    int m_textsEveryTick = 0;
    int m_knownDisconnections = 0;
    double m_longestReconnection = 0.0;   // s
    double m_longestDisconnection = 0.0;  // s
    Clock::time_point m_faultAt;
    bool m_wasConnected = false;  // when the fault came
    std::vector<std::string> m_problems;
};

}  // namespace torture
