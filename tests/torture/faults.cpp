#include "tests/torture/faults.h"

#include "irsdk/layout.h"
#include "tools/publisher/namedobjects.h"

#include <QCoreApplication>

#include <algorithm>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <sys/mman.h>
#include <thread>
#include <unistd.h>

namespace torture {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

// The host tries a few times a second, and each attempt takes at most 200 ms. Anything slower than
// this is a failure.
constexpr milliseconds kConnectionPatience(20000);
constexpr milliseconds kDisconnectionPatience(10000);
constexpr seconds kStall(5);
constexpr milliseconds kStallAnswer(10000);
constexpr seconds kWarmUp(60);
constexpr off_t kCutLength = 4096;

// The simulator's block, as Linux knows it.
constexpr auto kBlockName = irsdk_linuxName(IRSDK_MEMMAPFILENAME);

// About three laps.
constexpr int kMostTicks = 5000;

// Faults other than the kill recur every so many runs of the simulator.
constexpr int kCutEvery = 11;
constexpr int kStallEvery = 37;
constexpr int kUsualLayoutEvery = 5;
constexpr int kShuffledAtEnd = 3;
constexpr int kSeeds = 4;

// On average, one in so many runs has its names removed, its status switched, a host that connects
// and disconnects at random, or a new text in every tick.
constexpr int kRemovalEvery = 4;
constexpr int kSwitchEvery = 3;
constexpr int kComingEvery = 6;
constexpr int kTextsEvery = 4;

double secondsBetween(FaultTest::Clock::time_point from, FaultTest::Clock::time_point to) {
    return std::chrono::duration<double>(to - from).count();
}

}  // namespace

FaultTest::FaultTest(const Options& options, Host& host)
    : m_options(options),
      m_random(options.seed),
      m_host(host),
      m_connector(m_host.source(), std::nullopt),
      m_resources(std::min<Clock::duration>(kWarmUp, options.duration / 4)) {}

int FaultTest::pick(int count) {
    return std::uniform_int_distribution(0, count - 1)(m_random);
}

milliseconds FaultTest::between(int least, int most) {
    return milliseconds(least + pick(most - least + 1));
}

void FaultTest::note(const std::string& problem) {
    std::fprintf(stderr, "Run %d: %s\n", m_runs, problem.c_str());
    m_problems.push_back(problem);
}

template <typename Done>
bool FaultTest::waitFor(Done done, milliseconds atMost) {
    constexpr milliseconds kSlice(2);
    const auto end = Clock::now() + atMost;
    while (!done() && Clock::now() < end) {
        QCoreApplication::processEvents();
        std::this_thread::sleep_for(kSlice);
    }
    return done();
}

void FaultTest::run(Clock::time_point end) {
    begin(Layout::Usual);
    m_connector.start();
    driveUntilAFault();
    while (Clock::now() < end || m_killsInMidWrite < m_options.kills) {
        goOnWith(m_runs % kUsualLayoutEvery == 0 ? Layout::Usual : Layout::Other);
        driveUntilAFault();
    }
    // The last measurement, comparable with the first.
    goOnWith(Layout::Usual);
    driveUntilAFault();
    // With a table in another order the host keeps the names of the first one. From then on it only
    // has to survive.
    for (int i = 0; i < kShuffledAtEnd; ++i) {
        ++m_shuffles;
        goOnWith(Layout::Shuffled);
        driveUntilAFault();
    }
    finish();
    m_connector.stop();
    publisher::NamedObjects::removeLeftovers();
}

/** A run of the simulator, from the connection to the fault that ends it. */
void FaultTest::driveUntilAFault() {
    awaitConnection();
    if (isComparable()) {
        m_resources.measure();
    }
    if (happens(kRemovalEvery)) {
        removeObjects();
    }
    if (m_runs == 1) {
        driveToTheFirstLap();
    }
    drive(pick(kMostTicks));
    if (happens(kSwitchEvery)) {
        switchStatus();
        drive(pick(kMostTicks / 4));
    }
    if (happens(kComingEvery)) {
        comeAndGo();
    }
    const bool isCut = m_runs % kCutEvery == kCutEvery - 1;
    if (m_stallIsDue && !m_isNameless) {
        stall();
        drive(pick(kMostTicks / 4));
    }
    end(isCut ? Fault::Cut : Fault::Kill);
}

/** Starts the next simulator before or after the plugin has noticed that the last one is gone. */
void FaultTest::goOnWith(Layout layout) {
    const milliseconds pause = between(100, 2600);
    waitFor([this, pause] { return Clock::now() > m_faultAt + pause; }, pause);
    finish();
    begin(layout);
    awaitDisconnection();
}

std::vector<std::string> FaultTest::argumentsOf(Layout layout) {
    std::vector<std::string> arguments =
        testsupport::onShortTrack(12, {"--seed", std::to_string(1 + pick(kSeeds))});
    if (layout == Layout::Usual) {
        return arguments;
    }
    const auto add = [&arguments](const std::string& name, int value) {
        arguments.insert(arguments.end(), {name, std::to_string(value)});
    };
    constexpr int kMostPadding = 4096;
    constexpr int kMostExtra = 40;
    add("--pad-buffer", pick(kMostPadding));
    add("--extra-vars", pick(kMostExtra));
    add("--buffer-count", 1 + pick(4));
    if (happens(kTextsEvery)) {
        ++m_textsEveryTick;
        arguments.emplace_back("--session-info-every-tick");
    }
    if (layout == Layout::Shuffled) {
        arguments.emplace_back("--shuffle-vars");
    }
    return arguments;
}

void FaultTest::begin(Layout layout) {
    ++m_runs;
    m_layout = layout;
    m_isNameless = false;
    m_stallIsDue = m_stallIsDue || m_runs % kStallEvery == kStallEvery - 1;
    const QString log = m_folder.filePath(QStringLiteral("laps%1.log").arg(m_runs));
    m_run.reset();
    m_run = std::make_unique<SimulatorRun>(argumentsOf(layout), log.toStdString());
    if (!m_run->isStarted()) {
        note("the simulator does not start");
    }
    m_ledger = LapLedger();
    m_run->goOn();
}

/** Ends the simulator and checks its laps. */
void FaultTest::finish() {
    m_run->pause();
    m_run->kill();
    const auto driven = testsupport::readDrivenLaps(m_run->log());
    if (!driven) {
        note("the simulator's log cannot be read");
    } else if (m_layout != Layout::Shuffled) {
        const LapBalance balance = m_ledger.balance(
            *driven, m_runs == 1 ? LapLedger::Trust::AllCars : LapLedger::Trust::OwnCar);
        for (const std::string& complaint : balance.complaints) {
            std::fprintf(stderr, "Run %d: %s\n", m_runs, complaint.c_str());
        }
        m_balance += balance;
    }
    std::error_code ignored;
    std::filesystem::remove(m_run->log(), ignored);
}

void FaultTest::awaitConnection() {
    const int before = m_knownDisconnections;
    if (!waitFor([this] { return m_host.source().isConnected(); }, kConnectionPatience)) {
        note("no connection");
        return;
    }
    if (m_host.disconnections() > before) {
        m_knownDisconnections = m_host.disconnections();
        const auto possibleSince = std::max(m_host.disconnectedAt(), m_run->backSince());
        const double took = secondsBetween(possibleSince, m_host.connectedAt());
        m_longestReconnection = std::max(m_longestReconnection, took);
    }
    m_run->pause();
    step(false);
    step(true);
    step(true);
}

void FaultTest::awaitDisconnection() {
    if (!m_wasConnected) {
        return;
    }
    const bool ended =
        waitFor([this] { return m_host.disconnectedAt() > m_faultAt; }, kDisconnectionPatience);
    if (!ended) {
        note("the plugin does not notice the end");
        return;
    }
    m_longestDisconnection =
        std::max(m_longestDisconnection, secondsBetween(m_faultAt, m_host.disconnectedAt()));
}

void FaultTest::step(bool joins) {
    if (!m_run->step()) {
        note("the simulator does not answer");
        return;
    }
    m_host.writeTo(&m_ledger);
    const long long before = m_host.snapshots();
    m_host.tick();
    m_host.writeTo(nullptr);
    m_hasGap = m_hasGap || !joins;
    const std::optional<long long> tick = m_host.newestTick();
    if (m_host.snapshots() > before && tick) {
        m_ledger.see(*tick, !m_hasGap);
        m_hasGap = false;
    }
}

/** On a slow machine too there must be a lap: without one the run would prove nothing. */
void FaultTest::driveToTheFirstLap() {
    constexpr int kLongestOutLap = 10000;  // ticks
    for (int tick = 0; tick < kLongestOutLap && !m_ledger.hasLaps(); ++tick) {
        step(true);
    }
    for (int tick = 0; tick <= testsupport::kResultTicks; ++tick) {
        step(true);
    }
}

void FaultTest::drive(int ticks) {
    for (int tick = 0; tick < ticks && m_host.source().isConnected(); ++tick) {
        step(true);
    }
}

/** Switches the status off for less than the plugin tolerates, without ticks in that time. */
void FaultTest::switchStatus() {
    ++m_statusSwitches;
    constexpr int kTicksOff = 5;
    if (!m_run->command("status off", kStallAnswer)) {
        note("no answer to status off");
    }
    for (int i = 0; i < kTicksOff; ++i) {
        m_host.tick();
    }
    if (!m_run->command("status on", kStallAnswer)) {
        note("no answer to status on");
    }
}

void FaultTest::removeObjects() {
    ++m_removals;
    m_isNameless = true;
    publisher::NamedObjects::removeLeftovers();
}

void FaultTest::cutObjects() {
    const int block = shm_open(kBlockName.data(), O_RDWR, 0);
    if (block >= 0) {
        // Not to size 0: an empty block counts as one that is being created, and is reused.
        if (ftruncate(block, kCutLength) == 0) {
            ++m_cuts;
        }
        close(block);
    }
}

/** A host that connects, disconnects and probes at random. */
void FaultTest::comeAndGo() {
    m_connector.stop();
    m_run->goOn();
    constexpr int kChanges = 12;
    for (int i = 0; i < kChanges; ++i) {
        ++m_comings;
        switch (pick(3)) {
            case 0:
                m_host.source().connectToSource();
                break;
            case 1:
                m_host.source().disconnectFromSource();
                break;
            default:
                m_host.source().checkConnectionAvailability();
                break;
        }
        waitFor([] { return false; }, between(0, 30));
    }
    // An object without a name cannot be found again: then there is no connection until the end.
    m_connector.start();
    waitFor([this] { return m_host.source().isConnected(); }, milliseconds(500));
    m_run->pause();
    if (m_host.source().isConnected()) {
        step(false);
    }
    m_knownDisconnections = m_host.disconnections();
    drive(pick(kMostTicks / 4));
}

/** Not for a simulator without names: a host that has lost it cannot find it again. */
void FaultTest::stall() {
    if (!m_host.source().isConnected()) {
        return;
    }
    ++m_stalls;
    m_stallIsDue = false;
    m_faultAt = Clock::now();
    m_wasConnected = true;
    bool isAnswered = false;
    std::jthread stalled([this, &isAnswered] {
        isAnswered = m_run->command("stall " + std::to_string(kStall.count()), kStallAnswer);
        m_run->goOn();
    });
    awaitDisconnection();
    waitFor([this] { return m_run->backSince() > m_faultAt; }, kStallAnswer);
    stalled.join();
    if (!isAnswered) {
        note("no answer to a stall");
    }
    awaitConnection();
}

void FaultTest::end(Fault fault) {
    m_wasConnected = m_host.source().isConnected();
    m_run->rush();
    std::this_thread::sleep_for(between(1, 20));
    if (fault == Fault::Cut) {
        m_faultAt = Clock::now();
        cutObjects();
        // Its next write ends it. If its objects were unlinked, they are not truncated: kill it
        // here.
        waitFor([] { return false; }, milliseconds(50));
        m_run->kill();
        return;
    }
    ++m_kills;
    m_killsInMidWrite += m_run->killInMidWrite() ? 1 : 0;
    m_faultAt = Clock::now();
}

/** Measurements are comparable when connected, in the usual layout, with all cars in the pits. */
bool FaultTest::isComparable() const {
    return m_layout == Layout::Usual && m_host.source().isConnected();
}

void FaultTest::addTo(Table& table) const {
    const auto count = [&table](const char* name, int value) {
        table.add(name, std::to_string(value));
    };
    const auto none = [&table](const char* name, int value) {
        table.add(name, std::to_string(value), "0", value == 0);
    };
    table.add("kills of the simulator with a buffer half written",
              std::to_string(m_killsInMidWrite), "at least " + std::to_string(m_options.kills),
              m_killsInMidWrite >= m_options.kills);
    count("other kills", m_kills - m_killsInMidWrite);
    count("blocks cut off while read", m_cuts);
    count("stalls of 5 s", m_stalls);
    count("objects removed while read", m_removals);
    count("status off and on", m_statusSwitches);
    count("host comes or goes", m_comings);
    count("runs with a new session text in every tick", m_textsEveryTick);
    count("runs with a table in another order", m_shuffles);
    table.add("snapshots delivered", number(static_cast<double>(m_host.snapshots())));
    none("samples or laps without a connection", m_host.strays());
    count("laps driven to the line or the pits", m_balance.driven);
    count("of these, handed over", m_balance.handedOver);
    count("of these, cut short by a fault", m_balance.cutShort);
    count("of these, in pieces: other cars' laps after results of an earlier run",
          m_balance.inPieces);
    table.add("laps lost", std::to_string(m_balance.lost), "0 of at least 1",
              m_balance.lost == 0 && m_balance.handedOver > 0);
    none("laps handed over twice", m_balance.twice);
    none("laps with the wrong end", m_balance.wrongEnd);
    count("laps that begin with what was recorded after the line before a fault",
          m_balance.carriedOver);
    none("laps with other samples of two runs", m_balance.mixed);
    none("laps that nobody drove", m_balance.neverDriven);
    count("connections", m_host.connections());
    table.add("longest time from a fault to sendDisconnected()",
              number(m_longestDisconnection, 2, "s"));
    table.add("longest time from there, or from the simulator's return, to sendConnected()",
              number(m_longestReconnection, 2, "s"),
              "at most " + std::to_string(m_options.patience.count()) + " s",
              m_longestReconnection <= static_cast<double>(m_options.patience.count()));
    m_resources.addTo(table);
    none("other problems", static_cast<int>(m_problems.size()));
}

}  // namespace torture
