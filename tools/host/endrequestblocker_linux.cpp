#include "tools/host/endrequestblocker.h"
#include "tools/host/endrequests_linux.h"

#include <csignal>

namespace rataip::host {

/** The thread's former signal mask. New threads inherit the mask of the thread that starts them. */
class EndRequestBlocker::State {
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

EndRequestBlocker::EndRequestBlocker() : m_before(std::make_unique<State>()) {}

EndRequestBlocker::~EndRequestBlocker() = default;

}  // namespace rataip::host
