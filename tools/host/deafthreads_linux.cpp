#include "tools/host/deafthreads.h"
#include "tools/host/endrequests_linux.h"

#include <csignal>

namespace rataip::host {

/** What the thread held back before; threads inherit it from the one that starts them. */
class DeafThreads::State {
public:
    State() {
        const sigset_t requests = endRequests();
        pthread_sigmask(SIG_BLOCK, &requests, &m_mask);
    }
    ~State() { pthread_sigmask(SIG_SETMASK, &m_mask, nullptr); }
    State(const State&) = delete;
    State& operator=(const State&) = delete;

private:
    sigset_t m_mask{};
};

DeafThreads::DeafThreads() : m_before(std::make_unique<State>()) {}

DeafThreads::~DeafThreads() = default;

}  // namespace rataip::host
