// What it costs to take a snapshot out of the simulator's memory while nobody writes.

#include "benchmarks/contest.h"
#include "benchmarks/figure.h"
#include "benchmarks/figures.h"
#include "benchmarks/standin.h"
#include "benchmarks/workload.h"
#include "irsdk/irsdk.h"

#include <cstdlib>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace bench {

namespace {

constexpr int ticksPerLap = 5400;
constexpr int rounds = 41;
constexpr int copies = 500;

/** The simulator's block as a file, without the link. */
class BlockFile {
public:
    BlockFile()
        : m_descriptor(shm_open(irsdk_linuxName(IRSDK_MEMMAPFILENAME).data(), O_RDONLY, 0)) {}
    ~BlockFile() { close(m_descriptor); }
    BlockFile(const BlockFile&) = delete;
    BlockFile& operator=(const BlockFile&) = delete;

    void read(void* into, std::size_t length, std::int64_t offset) const {
        if (pread(m_descriptor, into, length, offset) != static_cast<ssize_t>(length)) {
            std::abort();
        }
    }

private:
    int m_descriptor;
};

class LinkFigure {
public:
    LinkFigure()
        : m_workload(ticksPerLap),
          m_standIn(m_workload),
          m_data(static_cast<std::size_t>(m_workload.bufferLength())) {
        m_standIn.republish();
        irsdk_startup();
        irsdk_getNewData(nullptr);
        const std::int32_t bufferOffset = m_standIn.header().varBuf[0].bufferOffset;
        m_contest.add("fast", copies, [this] {
            for (int i = 0; i < copies; ++i) {
                m_standIn.republish();
                if (!irsdk_getNewData(m_data.data(), m_workload.bufferLength())) {
                    std::abort();
                }
            }
        });
        m_contest.add("reads", copies, [this, bufferOffset] {
            for (int i = 0; i < copies; ++i) {
                m_standIn.republish();
                irsdk_header header{};
                m_block.read(&header, sizeof header, 0);
                m_block.read(m_data.data(), m_data.size(), bufferOffset);
                m_block.read(&header.varBuf[0], sizeof header.varBuf[0], irsdk_varBufOffset(0));
            }
        });
        m_contest.add("snapshot alone", copies, [this, bufferOffset] {
            for (int i = 0; i < copies; ++i) {
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
    registerFigure<LinkFigure>(report, "link", rounds);
}

}  // namespace bench
