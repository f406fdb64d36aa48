#include "tests/torture/copies.h"

#include "irsdk/irsdk.h"
#include "tests/support/checkedsnapshot.h"
#include "tests/support/publisher.h"
#include "tests/support/simulatorprocess.h"
#include "tests/support/testblock.h"
#include "tools/publisher/namedobjects.h"
#include "tools/simulator/checksum.h"

#include <array>
#include <cstddef>
#include <cstring>
#include <limits>
#include <span>
#include <string>
#include <vector>

namespace torture {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr int kBufferBytes = 512;
constexpr int kPatience = 5;  // ms of a wait for the next snapshot

constexpr std::array kRings{3, 2, 1};

// Upper limits; normally all of these end sooner.
constexpr std::chrono::seconds kCarelessAtMost(60);
constexpr std::chrono::seconds kSimulatorStart(30);
constexpr std::chrono::seconds kSimulatorTime(3);
constexpr std::chrono::minutes kCopiesAtMost(30);

// A few prove that the test can detect torn copies.
constexpr long long kTornEnough = 20;
constexpr long long kNever = std::numeric_limits<long long>::max();

template <typename Take, typename IsWhole>
CopyCount copyUntil(long long wanted, long long tornEnough, Clock::time_point end, Take take,
                    IsWhole isWhole) {
    CopyCount count;
    while (count.copies < wanted && count.torn < tornEnough && Clock::now() < end) {
        if (take()) {
            ++count.copies;
            count.torn += isWhole() ? 0 : 1;
        }
    }
    return count;
}

/** A ring that another process overwrites at full speed. */
class CheckedRing {
public:
    explicit CheckedRing(int buffers) : m_publisher(testsupport::Publisher::Where::OtherProcess) {
        testsupport::TestBlock block;
        block.setBufferCount(buffers);
        block.setBufferLength(kBufferBytes);
        m_snapshot.resize(static_cast<std::size_t>(block.snapshotLength()));
        m_publisher.publish(block);
        for (int buffer = 0; buffer < buffers; ++buffer) {
            m_publisher.completeChecked(buffer, buffer + 1);
        }
        m_open = irsdk_startup();
        m_publisher.command("write " + std::to_string(buffers));
    }

    ~CheckedRing() {
        irsdk_shutdown();
        m_publisher.command("stop");
    }
    CheckedRing(const CheckedRing&) = delete;
    CheckedRing& operator=(const CheckedRing&) = delete;

    [[nodiscard]] bool takeByLink() {
        return m_open && irsdk_waitForDataReady(kPatience, m_snapshot.data(),
                                                static_cast<int>(m_snapshot.size()));
    }

    /** Copies the newest buffer without checking afterwards. */
    [[nodiscard]] bool takeCarelessly() {
        if (!m_open) {
            return false;
        }
        const irsdk_header* header = irsdk_getHeader();
        const auto* buffers = reinterpret_cast<const volatile irsdk_varBuf*>(header->varBuf);
        int newest = 0;
        for (int i = 1; i < header->numBuf; ++i) {
            newest = buffers[i].tickCount > buffers[newest].tickCount ? i : newest;
        }
        std::memcpy(m_snapshot.data(), irsdk_getData(newest), m_snapshot.size());
        return true;
    }

    [[nodiscard]] bool isWhole() const {
        return testsupport::isUntorn(m_snapshot.data(), m_snapshot.size());
    }

private:
    testsupport::Publisher m_publisher;
    std::vector<char> m_snapshot;
    bool m_open = false;
};

CopyCount copyByLink(int buffers, long long wanted, milliseconds atMost) {
    CheckedRing ring(buffers);
    return copyUntil(
        wanted, kNever, Clock::now() + atMost, [&] { return ring.takeByLink(); },
        [&] { return ring.isWhole(); });
}

CopyCount copyCarelessly(milliseconds atMost) {
    CheckedRing ring(2);
    return copyUntil(
        std::numeric_limits<long long>::max(), kTornEnough, Clock::now() + atMost,
        [&] { return ring.takeCarelessly(); }, [&] { return ring.isWhole(); });
}

/** The stand-in simulator at full speed, with one buffer, which every tick overwrites. */
CopyCount copyOfSimulator() {
    // Objects that a killed process has left must not be mistaken for the simulator's.
    publisher::NamedObjects::removeLeftovers();
    testsupport::SimulatorProcess simulator(
        {"--speed", "max", "--quiet", "--buffer-count", "1", "--cars", "4"});
    irsdk_header header{};
    int at = -1;
    const auto startedAt = Clock::now();
    while (at < 0 && Clock::now() < startedAt + kSimulatorStart) {
        // Reopens until the table is there, which is written after the block has its size.
        irsdk_shutdown();
        if (irsdk_startup() && irsdk_copyHeader(header) && header.bufferLength > 0) {
            at = irsdk_varNameToOffset(simulator::kChecksumName);
        }
    }
    std::vector<char> snapshot(static_cast<std::size_t>(header.bufferLength));
    const auto isWhole = [&] {
        std::int32_t stated = 0;
        std::memcpy(&stated, snapshot.data() + at, sizeof stated);
        return simulator::snapshotChecksum(std::as_bytes(std::span(snapshot)),
                                           static_cast<std::size_t>(at)) == stated;
    };
    const CopyCount count = copyUntil(
        at < 0 ? 0 : kNever, kNever, Clock::now() + kSimulatorTime,
        [&] { return irsdk_waitForDataReady(kPatience, snapshot.data(), header.bufferLength); },
        isWhole);
    irsdk_shutdown();
    simulator.kill();
    publisher::NamedObjects::removeLeftovers();
    return count;
}

}  // namespace

void CopyTest::run(long long wanted) {
    const auto start = Clock::now();
    m_careless = copyCarelessly(kCarelessAtMost);
    m_simulator = copyOfSimulator();
    for (std::size_t i = 0; i < kRings.size(); ++i) {
        const auto rings = static_cast<long long>(kRings.size() - i);
        m_link += copyByLink(kRings[i], (wanted - m_link.copies + rings - 1) / rings,
                             kCopiesAtMost / static_cast<int>(kRings.size()));
    }
    m_seconds = std::chrono::duration<double>(Clock::now() - start).count();
}

void CopyTest::addTo(Table& table, long long wanted) const {
    const CopyCount all{m_link.copies + m_simulator.copies, m_link.torn + m_simulator.torn};
    table.add("copies out of a ring that is overwritten without pause",
              number(static_cast<double>(all.copies)),
              "at least " + number(static_cast<double>(wanted)), all.copies >= wanted);
    table.add("of these, of the simulator at full speed",
              number(static_cast<double>(m_simulator.copies)), "some", m_simulator.copies > 0);
    table.add("torn copies that were handed out", number(static_cast<double>(all.torn)), "0",
              all.torn == 0);
    table.add("torn copies of a reader without the second look",
              number(static_cast<double>(m_careless.torn)) + " of " +
                  number(static_cast<double>(m_careless.copies)),
              "some", m_careless.torn > 0);
    table.add("time for copies", number(m_seconds, 1, "s"));
}

}  // namespace torture
