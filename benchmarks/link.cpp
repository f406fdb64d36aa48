// What it costs to take a snapshot out of the simulator's memory while nobody writes.

#include "benchmarks/blockfile.h"
#include "benchmarks/contest.h"
#include "benchmarks/figures.h"
#include "benchmarks/standin.h"
#include "benchmarks/workload.h"
#include "irsdk/irsdk.h"

#include <cstdlib>

namespace bench {

namespace {

constexpr int kTicksPerLap = 5400;
constexpr int kRounds = 41;
constexpr int kCopies = 500;

class LinkFigure {
public:
    LinkFigure()
        : m_workload(kTicksPerLap),
          m_standIn(m_workload),
          m_data(static_cast<std::size_t>(m_workload.bufferLength())) {
        m_standIn.republish();
        irsdk_startup();
        irsdk_getNewData(nullptr);
        const std::int32_t bufferOffset = m_standIn.header().varBuf[0].bufferOffset;
        m_contest.add("fast", kCopies, [this] {
            for (int i = 0; i < kCopies; ++i) {
                m_standIn.republish();
                if (!irsdk_getNewData(m_data.data(), m_workload.bufferLength())) {
                    std::abort();
                }
            }
        });
        m_contest.add("reads", kCopies, [this, bufferOffset] {
            for (int i = 0; i < kCopies; ++i) {
                m_standIn.republish();
                irsdk_header header{};
                m_block.read(&header, sizeof header, 0);
                m_block.read(m_data.data(), m_data.size(), bufferOffset);
                m_block.read(&header.varBuf[0], sizeof header.varBuf[0], irsdk_varBufOffset(0));
            }
        });
        m_contest.add("snapshot alone", kCopies, [this, bufferOffset] {
            for (int i = 0; i < kCopies; ++i) {
                m_standIn.republish();
                m_block.read(m_data.data(), m_data.size(), bufferOffset);
            }
        });
    }

    ~LinkFigure() { irsdk_shutdown(); }

    double round() { return m_contest.round(); }

    void report(Report& report) {
        report.add("snapshot copy, writer idle: to a pread of the same bytes",
                   m_contest.ratio("fast", "reads"), atMost(1.2),
                   timeText(m_contest.seconds("fast")) + " : " +
                       timeText(m_contest.seconds("reads")) + ", " +
                       timeText(m_contest.seconds("snapshot alone")) + " of it for the " +
                       std::to_string(m_data.size()) + " bytes of the snapshot");
    }

private:
    Workload m_workload;
    StandIn m_standIn;
    BlockFile m_block;
    std::vector<char> m_data;
    Contest m_contest;
};

}  // namespace

void registerLink(Report& report) {
    registerFigure<LinkFigure>(report, "link", kRounds);
}

}  // namespace bench
