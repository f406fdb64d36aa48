// What it costs to take a snapshot out of the simulator's memory while nobody writes.

#include "benchmarks/contest.h"
#include "benchmarks/figure.h"
#include "benchmarks/figures.h"
#include "benchmarks/sizecheck.h"
#include "benchmarks/standin.h"
#include "benchmarks/workload.h"
#include "irsdk/irsdk.h"

#include <cstdlib>
#include <cstring>

namespace bench {

namespace {

constexpr int ticksPerLap = 5400;
constexpr int rounds = 41;
constexpr int copies = 500;

class LinkFigure {
public:
    LinkFigure()
        : m_workload(ticksPerLap),
          m_standIn(m_workload),
          m_data(static_cast<std::size_t>(m_workload.bufferLength())) {
        m_standIn.publish(0);
        irsdk_startup();
        irsdk_getNewData(nullptr);
        m_contest.add("fast", copies, [this] {
            for (int i = 0; i < copies; ++i) {
                m_standIn.republish();
                if (!irsdk_getNewData(m_data.data(), m_workload.bufferLength())) {
                    std::abort();
                }
            }
        });
        m_contest.add("memcpy", copies, [this] {
            for (int i = 0; i < copies; ++i) {
                m_standIn.republish();
                if (m_sizeCheck.size() == 0) {
                    std::abort();
                }
                std::memcpy(m_data.data(), m_standIn.newestBuffer(), m_data.size());
                benchmark::DoNotOptimize(m_data.data());
                benchmark::ClobberMemory();
            }
        });
    }

    ~LinkFigure() { irsdk_shutdown(); }

    double round() { return m_contest.round(); }

    void report(Report& report) {
        report.add("snapshot copy, writer idle: to a size check and memcpy",
                   m_contest.ratio("fast", "memcpy"), atMost(1.2),
                   timeText(m_contest.seconds("fast")) + " : " +
                       timeText(m_contest.seconds("memcpy")) + ", " +
                       std::to_string(m_data.size()) + " bytes");
    }

private:
    Workload m_workload;
    StandIn m_standIn;
    SizeCheck m_sizeCheck;
    std::vector<char> m_data;
    Contest m_contest;
};

}  // namespace

void registerLink(Report& report) {
    registerFigure<LinkFigure>(report, "link", rounds);
}

}  // namespace bench
