#include "tools/host/endrequests_linux.h"
#include "tools/host/interrupt.h"

#include <QSocketNotifier>

#include <csignal>
#include <sys/signalfd.h>
#include <unistd.h>

namespace rataip::host {

/** Blocks the normal delivery of the signals and reads them from a descriptor instead. */
class Interrupt::Listener {
public:
    explicit Listener(Interrupt& interrupt)
        : m_signals(endRequests()),
          m_descriptor(signalfd(-1, &m_signals, SFD_CLOEXEC | SFD_NONBLOCK)) {
        if (m_descriptor < 0) {
            return;
        }
        pthread_sigmask(SIG_BLOCK, &m_signals, &m_maskBefore);
        m_notifier = std::make_unique<QSocketNotifier>(m_descriptor, QSocketNotifier::Read);
        QObject::connect(m_notifier.get(), &QSocketNotifier::activated, &interrupt,
                         [this, &interrupt] {
                             if (takeSignal()) {
                                 letSecondCtrlCThrough();
                                 emit interrupt.requested();
                             }
                         });
    }

    ~Listener() {
        if (m_descriptor >= 0) {
            m_notifier.reset();
            // Drops requests that arrived while the program was ending in order.
            while (takeSignal()) {
            }
            pthread_sigmask(SIG_SETMASK, &m_maskBefore, nullptr);
            close(m_descriptor);
        }
    }

    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

private:
    // A signal that is not read would end the program as soon as it is unblocked.
    [[nodiscard]] bool takeSignal() const {
        signalfd_siginfo information{};
        const ssize_t size = read(m_descriptor, &information, sizeof information);
        return size == static_cast<ssize_t>(sizeof information);
    }

    // Not the other signals, because a process group is often ended with several of them.
    void letSecondCtrlCThrough() {
        m_notifier->setEnabled(false);
        sigset_t ctrlC;
        sigemptyset(&ctrlC);
        sigaddset(&ctrlC, SIGINT);
        pthread_sigmask(SIG_UNBLOCK, &ctrlC, nullptr);
    }

    sigset_t m_signals;
    sigset_t m_maskBefore{};
    int m_descriptor;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

Interrupt::Interrupt() : m_listener(std::make_unique<Listener>(*this)) {}

Interrupt::~Interrupt() = default;

}  // namespace rataip::host
