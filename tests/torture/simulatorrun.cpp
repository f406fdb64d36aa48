#include "tests/torture/simulatorrun.h"

#include "irsdk/irsdk.h"

#include <limits>
#include <signal.h>
#include <sys/wait.h>

namespace torture {

namespace {

using std::chrono::milliseconds;

// The simulator's mark of a buffer that is being overwritten.
constexpr std::int32_t kInWriting = std::numeric_limits<std::int32_t>::min();

bool isAnyBufferInWriting() {
    const irsdk_header* header = irsdk_getHeader();
    if (header == nullptr) {
        return false;
    }
    const auto* buffers = reinterpret_cast<const volatile irsdk_varBuf*>(header->varBuf);
    for (int i = 0; i < header->numBuf; ++i) {
        // Unused buffers have the mark too, but a rushing simulator has used all of them.
        if (buffers[i].tickCount == kInWriting) {
            return true;
        }
    }
    return false;
}

}  // namespace

SimulatorRun::SimulatorRun(const std::vector<std::string>& arguments, const std::string& log)
    : SimulatorProcess(testsupport::inLockStep(arguments, log)), m_log(log) {
    // The answer to the first step says that everything is published.
    m_started = step().has_value();
    m_backSince = Clock::now();
    // Now, because the block may lose its name later.
    irsdk_startup();
}

SimulatorRun::~SimulatorRun() {
    pause();
    kill();
    irsdk_shutdown();
}

bool SimulatorRun::command(const std::string& line, milliseconds timeOut) {
    const bool done = writeLine(line) && readLine(static_cast<int>(timeOut.count())) == "ok";
    m_backSince = Clock::now();
    return done;
}

void SimulatorRun::rush() {
    writeLine("step 1000000000");
}

bool SimulatorRun::killInMidWrite() {
    constexpr std::chrono::seconds kLongest(3);
    const auto end = Clock::now() + kLongest;
    bool midWrite = false;
    while (!midWrite && Clock::now() < end && ::kill(id(), SIGSTOP) == 0) {
        int state = 0;
        if (waitpid(id(), &state, WUNTRACED) != id() || !WIFSTOPPED(state)) {
            break;
        }
        midWrite = isAnyBufferInWriting();
        if (!midWrite) {
            ::kill(id(), SIGCONT);
            std::this_thread::yield();
        }
    }
    kill();
    return midWrite;
}

}  // namespace torture
