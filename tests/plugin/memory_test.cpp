#include "tests/plugin/hostlog.h"
#include "tests/plugin/plugintest.h"
#include "tests/support/memoryshortage.h"

#include <algorithm>
#include <fstream>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

// When memory runs out, the plugin disconnects properly, and no exception leaves it.

using namespace Qt::StringLiterals;

/** Failed allocations are expected here and must not be reported by the sanitizer. */
extern "C" __attribute__((visibility("default"))) const char* __asan_default_options() {
    return "allocator_may_return_null=1";
}

namespace {

using testsupport::MemoryShortage;
using TLM::SDK::DataEmitter;

/** A host that takes no memory: it only counts signals. */
class FrugalHost {
public:
    explicit FrugalHost(DataEmitter* emitter) {
        const auto listen = [this, emitter](auto signal, auto slot) {
            QObject::connect(emitter, signal, &m_context, slot);
        };
        listen(&DataEmitter::sendConnected, [this] { begin(); });
        listen(&DataEmitter::sendDisconnected, [this] { end(); });
        listen(&DataEmitter::sendSamples, [this] { ++samples; });
        listen(&DataEmitter::sendTelemetryLap, [this] { ++laps; });
    }

    bool isOpen = false;
    bool isInOrder = true;
    int samples = 0;
    int laps = 0;

private:
    void begin() {
        isInOrder = isInOrder && !isOpen;
        isOpen = true;
    }
    void end() {
        isInOrder = isInOrder && isOpen;
        isOpen = false;
    }

    QObject m_context;
};

/** Lets an allocation fail in each operation of a drive, at nearly each of its allocations. */
class ShortOfMemory : public ::testing::TestWithParam<MemoryShortage::Kind> {
protected:
    /** A connection with a changing session, with laps that end, and a disconnection. */
    void drive(MemoryShortage& shortage) {
        const auto tick = [&] {
            simulator.nextTick();
            shortage.during([this] { plugin->tick(); });
        };
        shortage.during([this] { plugin->initialize(); });
        shortage.during([this] { plugin->updateCarList(); });
        simulator.run();
        shortage.during([this] { plugin->checkConnectionAvailability(); });
        shortage.during([this] { plugin->connectToSource(); });
        simulator.stop();
        tick();
        tick();
        joined.trackLength = joined.trackLength.empty() ? "4.00 km" : "";
        simulator.rewriteSession(joined);
        tick();
        simulator.crossLine(StagedSimulator::kOwnCar);
        simulator.crossLine(StagedSimulator::kFastCar);
        tick();
        tick();
        shortage.during([this] { plugin->disconnectFromSource(); });
    }

    /** Everything works once there is enough memory again. */
    void expectUsable() {
        EXPECT_TRUE(host->isInOrder);
        EXPECT_EQ(host->isOpen, plugin->isConnected());
        plugin->initialize();
        simulator.run();
        // On a busy machine there may be no tick within the time of one attempt.
        for (int attempt = 0; attempt < kManyAttempts && !plugin->isConnected(); ++attempt) {
            plugin->connectToSource();
        }
        simulator.stop();
        ASSERT_TRUE(plugin->isConnected());
        const int before = host->samples;
        simulator.nextTick();
        plugin->tick();
        EXPECT_EQ(host->samples, before + 1);
        plugin->disconnectFromSource();
        EXPECT_TRUE(host->isInOrder);
        EXPECT_FALSE(host->isOpen);
    }

    void makePlugin() {
        plugin = std::make_unique<iRPluginLive>();
        host = std::make_unique<FrugalHost>(plugin->dataEmitter());
        // Creates the timer: Qt does not handle a failed allocation when it connects it.
        plugin->initialize();
    }

    /** The number of allocations in a whole drive. */
    std::size_t countPieces() {
        constexpr int kTicks = 5;
        constexpr int kLaps = 2;
        for (int attempt = 0; attempt < kManyAttempts; ++attempt) {
            makePlugin();
            MemoryShortage none(MemoryShortage::Kind::OnePiece, MemoryShortage::kNever);
            drive(none);
            if (host->samples == kTicks && host->laps == kLaps) {
                return none.pieces();
            }
        }
        ADD_FAILURE() << "no drive was complete";
        return 0;
    }

    static constexpr int kManyAttempts = 100;

    StagedSimulator simulator;
    StagedSession joined;
    std::unique_ptr<iRPluginLive> plugin;
    std::unique_ptr<FrugalHost> host;
    HostLog log{[this](const QString&) {
        host->isInOrder = host->isInOrder && !plugin->isConnected();
        plugin->tick();
    }};
};

}  // namespace

TEST_P(ShortOfMemory, DisconnectsProperlyAtAnyFailedAllocation) {
    simulator.publish();
    const std::size_t pieces = countPieces();
    // All of the first allocations, then fewer and fewer, because ticks repeat them.
    for (std::size_t piece = 1; piece <= pieces; piece += 1 + piece / 400) {
        SCOPED_TRACE(piece);
        makePlugin();
        {
            MemoryShortage shortage(GetParam(), piece);
            drive(shortage);
        }
        ASSERT_NO_FATAL_FAILURE(expectUsable());
    }
    plugin.reset();
}

INSTANTIATE_TEST_SUITE_P(Drive, ShortOfMemory,
                         ::testing::Values(MemoryShortage::Kind::OnePiece,
                                           MemoryShortage::Kind::Everything),
                         [](const ::testing::TestParamInfo<MemoryShortage::Kind>& row) {
                             return row.param == MemoryShortage::Kind::OnePiece
                                        ? std::string("OfOnePiece")
                                        : std::string("OfEverything");
                         });

namespace {

/** A session text that needs more memory than a child process may have. */
class SmallAddressSpace : public ::testing::Test {
protected:
    /** A text outside the block counts as missing. */
    void hideText() { simulator.publisher.poke(offsetof(irsdk_header, sessionInfoOffset), -1); }
    void showText() {
        simulator.publisher.poke(offsetof(irsdk_header, sessionInfoOffset),
                                 simulator.block.header().sessionInfoOffset);
    }

    /** Millions of short lines, all with different names. */
    void publishEndlessText() {
        constexpr std::size_t kSize = 12 << 20;
        std::string text = "---\n";
        for (std::size_t i = 0; text.size() < kSize; ++i) {
            text += std::to_string(i) + ":\n";
        }
        simulator.block.setSessionText(text);
        simulator.publish();
    }

    void connectWhileRunning() {
        simulator.run();
        plugin->connectToSource();
        simulator.stop();
    }

    void tick() {
        simulator.nextTick();
        plugin->tick();
    }

    /** Without the large text, everything works. */
    void expectConnectionWithoutText() {
        host->forget();
        hideText();
        connectWhileRunning();
        EXPECT_EQ(host->heard(), connecting);
        tick();
        EXPECT_EQ(host->lastSamples().size(), 64);
    }

    /** Runs `part` in a child process that may use little more memory; expects success. */
    template <typename Part>
    void runConfined(Part part) {
        const pid_t child = fork();
        if (child == 0) {
            confine();
            plugin = std::make_unique<iRPluginLive>();
            host = std::make_unique<HostRecorder>(plugin->dataEmitter());
            plugin->initialize();
            host->forget();
            part();
            _exit(HasFailure() ? 1 : 0);
        }
        int status = -1;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
    }

    const QStringList connecting{u"Connected"_s, u"Message [iRacing plugin] Connected (0)"_s};
    const QStringList tooLittle{
        u"No data from the simulator: there is not enough memory for what the simulator publishes"_s};
    StagedSimulator simulator;
    QStringList lines;
    HostLog log{[this](const QString& text) { lines.append(text); }};
    std::unique_ptr<iRPluginLive> plugin;
    std::unique_ptr<HostRecorder> host;

private:
    static void confine() {
        constexpr rlim_t kRoom = rlim_t{96} << 20;
        std::ifstream file("/proc/self/statm");
        rlim_t pages = 0;
        file >> pages;
        rlimit limit{};
        getrlimit(RLIMIT_AS, &limit);
        limit.rlim_cur = pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE)) + kRoom;
        ASSERT_EQ(setrlimit(RLIMIT_AS, &limit), 0);
    }
};

}  // namespace

TEST_F(SmallAddressSpace, RefusesASimulatorWhoseSessionDoesNotFitUntilItDoes) {
    publishEndlessText();
    runConfined([this] {
        connectWhileRunning();
        connectWhileRunning();
        EXPECT_EQ(host->heard(), (QStringList{u"NotConnected"_s, u"NotConnected"_s}));
        EXPECT_EQ(lines, tooLittle) << "once";
        EXPECT_EQ(testsupport::OpenObjects::now().simulatorMaps, 0);

        expectConnectionWithoutText();
    });
}

TEST_F(SmallAddressSpace, DisconnectsProperlyWhenTheSessionNoLongerFits) {
    publishEndlessText();
    hideText();
    runConfined([this] {
        connectWhileRunning();
        tick();
        ASSERT_EQ(host->samples.size(), 1);
        host->forget();

        showText();
        simulator.setSessionUpdate(1000);
        tick();
        EXPECT_EQ(host->heard(),
                  (QStringList{u"Disconnected"_s, u"Message [iRacing plugin] Disconnected (0)"_s}));
        EXPECT_EQ(lines, tooLittle);
        EXPECT_EQ(testsupport::OpenObjects::now().simulatorMaps, 0);

        expectConnectionWithoutText();
    });
}
