#include "tests/plugin/plugintest.h"

#include <QCoreApplication>
#include <QEvent>
#include <QEventLoop>

#include <cmath>
#include <condition_variable>
#include <deque>
#include <future>
#include <mutex>
#include <random>
#include <thread>
#include <utility>

// A host whose slots run on another thread than the plugin, by queued connections. It keeps lists
// for a while and reads them there while the plugin fills the next ones.

namespace {

using TLM::SDK::DataEmitter;
using TLM::SDK::Lap;
using TLM::SDK::LivePluginInfo;
using TLM::SDK::Sample;

/**
 * Synchronizes posting a signal with its slot, so that the thread sanitizer sees it: Qt's own
 * synchronization is in a library that is not built for the sanitizer. It orders nothing else, in
 * particular not the host's use of a list and the plugin's later use of it.
 */
class Handover {
public:
    void post() {
        const std::lock_guard lock(m_mutex);
        ++m_posted;
        m_grown.notify_all();
    }

    void await(int signal) {
        std::unique_lock lock(m_mutex);
        m_grown.wait(lock, [&] { return m_posted >= signal; });
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_grown;
    int m_posted = 0;
};

bool isSame(double left, double right) {
    return left == right || (std::isnan(left) && std::isnan(right));
}

double sumOf(const QList<Sample>& samples) {
    double sum = 0.0;
    for (const Sample& sample : samples) {
        for (const auto& value : sample.data()) {
            sum += value.value.toDouble() + static_cast<double>(value.unit().size());
        }
    }
    return sum;
}

double sumOf(const Lap& lap) {
    double sum = 0.0;
    for (const auto& channel : lap.channels()) {
        for (const double reading : channel->samples) {
            sum += reading;
        }
    }
    return sum;
}

/** Keeps lists and laps for a random time and checks them before it releases them. */
class KeepingHost : public QObject {
public:
    struct Report {
        int lists = 0;
        int laps = 0;
        int cars = 0;
        int changed = 0;  // kept lists and laps that have changed
    };

    KeepingHost(DataEmitter* emitter, Handover& handover) : m_handover(handover) {
        listen(emitter, &DataEmitter::sendSamples,
               [this](const QList<Sample>& samples) { keep(samples); });
        listen(emitter, &DataEmitter::sendTelemetryLap,
               [this](const QSharedPointer<Lap>& lap) { keep(lap); });
        listen(emitter, &DataEmitter::sendCarListChanged, [this](const LivePluginInfo& info) {
            m_report.cars = static_cast<int>(info.cars.size());
        });
    }

    /** Releases everything. */
    Report finish() {
        while (!m_lists.empty()) {
            releaseList(m_lists.size() - 1);
        }
        for (const auto& [lap, sum] : m_laps) {
            m_report.changed += isSame(sumOf(*lap), sum) ? 0 : 1;
        }
        m_laps.clear();
        return m_report;
    }

private:
    /** First posts the slot, then marks the signal as posted: Qt calls slots in this order. */
    template <typename Signal, typename Slot>
    void listen(DataEmitter* emitter, Signal signal, Slot slot) {
        connect(
            emitter, signal, this,
            [this, slot](const auto& argument) {
                m_handover.await(++m_received);
                slot(argument);
            },
            Qt::QueuedConnection);
        connect(
            emitter, signal, emitter, [this] { m_handover.post(); }, Qt::DirectConnection);
    }

    void keep(const QList<Sample>& samples) {
        constexpr std::size_t kMost = 7;
        ++m_report.lists;
        m_lists.emplace_back(samples, sumOf(samples));
        while (m_lists.size() > m_random() % kMost) {
            releaseList(m_random() % m_lists.size());
        }
    }

    void keep(const QSharedPointer<Lap>& lap) {
        ++m_report.laps;
        m_laps.emplace_back(lap, sumOf(*lap));
    }

    void releaseList(std::size_t index) {
        const auto kept = m_lists.begin() + static_cast<std::ptrdiff_t>(index);
        m_report.changed += isSame(sumOf(kept->first), kept->second) ? 0 : 1;
        m_lists.erase(kept);
    }

    Handover& m_handover;
    int m_received = 0;
    std::mt19937 m_random{1};
    std::deque<std::pair<QList<Sample>, double>> m_lists;
    std::deque<std::pair<QSharedPointer<Lap>, double>> m_laps;
    Report m_report;
};

/** The host's thread with its event loop. */
class HostThread {
public:
    explicit HostThread(DataEmitter* emitter) : m_thread([this, emitter] { run(emitter); }) {
        m_loop = m_started.get_future().get();
    }

    ~HostThread() { finish(); }
    HostThread(const HostThread&) = delete;
    HostThread& operator=(const HostThread&) = delete;

    /**
     * Handles all events posted so far, and ends. It posts an event, because the reference count of
     * a queued call would be shared by both threads in a way that the sanitizer does not see.
     */
    KeepingHost::Report finish() {
        if (m_thread.joinable()) {
            QCoreApplication::postEvent(m_loop, new QEvent(QEvent::Quit));
            m_posted.set_value();
            m_thread.join();
        }
        return m_report;
    }

private:
    void run(DataEmitter* emitter) {
        KeepingHost host(emitter, m_handover);
        QEventLoop loop;
        m_started.set_value(&loop);
        loop.exec();
        // Posting an event wakes this thread at its end, so the thread must still exist.
        m_posted.get_future().wait();
        m_report = host.finish();
    }

    Handover m_handover;
    std::promise<QEventLoop*> m_started;
    std::promise<void> m_posted;
    KeepingHost::Report m_report;
    QEventLoop* m_loop = nullptr;
    std::thread m_thread;
};

}  // namespace

class HostOnAnotherThread : public InitializedPluginTest {
protected:
    HostOnAnotherThread() : m_hostThread(plugin->dataEmitter()) {}

    HostThread m_hostThread;
};

TEST_F(HostOnAnotherThread, KeepsUnchangedListsAndLapsWhileThePluginRuns) {
    constexpr int kTicks = 1500;
    constexpr int kTicksPerLap = 100;
    connectAndTick();
    for (int i = 1; i <= kTicks; ++i) {
        if (i % kTicksPerLap == 0) {
            simulator.crossLine(kOwnCar);
            simulator.crossLine(kFastCar);
        }
        tick();
        host.forget();
    }
    plugin->disconnectFromSource();
    const KeepingHost::Report report = m_hostThread.finish();
    EXPECT_EQ(report.lists, kTicks + 1);
    EXPECT_GE(report.laps, 2 * (kTicks / kTicksPerLap));
    EXPECT_EQ(report.cars, 64);
    EXPECT_EQ(report.changed, 0);
}
