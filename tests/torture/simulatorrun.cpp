#include "tests/torture/simulatorrun.h"

#include "irsdk/irsdk.h"

#include <limits>
#include <signal.h>
#include <sys/wait.h>
#include <utility>

namespace torture {

namespace {

using std::chrono::milliseconds;

constexpr int kAnswerTimeOut = 20000;  // ms
constexpr milliseconds kPace(8);

// The simulator's mark of a buffer that is being overwritten.
constexpr std::int32_t kInWriting = std::numeric_limits<std::int32_t>::min();

bool isAnyBufferInWriting() {
    const irsdk_header* header = irsdk_getHeader();
    if (header == nullptr) {
        return false;
    }
    const auto* buffers = reinterpret_cast<const volatile irsdk_varBuf*>(header->varBuf);
    for (int i = 0; i < header->numBuf; ++i) {
        // Buffers of a young simulator bear the mark too; those of one that rushed do not.
        if (buffers[i].tickCount == kInWriting) {
            return true;
        }
    }
    return false;
}

std::vector<std::string> inLockStep(std::vector<std::string> arguments, const std::string& log) {
    arguments.insert(arguments.end(), {"--lockstep", "--log", log});
    return arguments;
}

}  // namespace

SimulatorRun::SimulatorRun(std::vector<std::string> arguments, const std::string& log)
    : m_process(inLockStep(std::move(arguments), log)), m_log(log) {
    // The answer to the first step says that everything is published.
    m_started = step();
    m_backSince = Clock::now();
    // At once, because the block may lose its name.
    irsdk_startup();
}

SimulatorRun::~SimulatorRun() {
    pause();
    m_process.kill();
    irsdk_shutdown();
}

bool SimulatorRun::step() {
    return m_process.step(1, kAnswerTimeOut).has_value();
}

bool SimulatorRun::command(const std::string& line, milliseconds timeOut) {
    const bool done =
        m_process.writeLine(line) && m_process.readLine(static_cast<int>(timeOut.count())) == "ok";
    m_backSince = Clock::now();
    return done;
}

void SimulatorRun::goOn() {
    m_pace = std::jthread([this](const std::stop_token& stop) {
        while (!stop.stop_requested() && step()) {
            std::this_thread::sleep_for(kPace);
        }
    });
}

void SimulatorRun::pause() {
    if (m_pace.joinable()) {
        m_pace.request_stop();
        m_pace.join();
    }
}

void SimulatorRun::rush() {
    m_process.writeLine("step 1000000000");
}

bool SimulatorRun::killInMidWrite() {
    constexpr std::chrono::seconds kPatience(3);
    const auto end = Clock::now() + kPatience;
    const pid_t id = m_process.id();
    bool midWrite = false;
    while (!midWrite && Clock::now() < end && ::kill(id, SIGSTOP) == 0) {
        int state = 0;
        if (waitpid(id, &state, WUNTRACED) != id || !WIFSTOPPED(state)) {
            break;
        }
        midWrite = isAnyBufferInWriting();
        if (!midWrite) {
            ::kill(id, SIGCONT);
            std::this_thread::yield();
        }
    }
    m_process.kill();
    return midWrite;
}

void SimulatorRun::kill() {
    m_process.kill();
}

}  // namespace torture
