#pragma once

#include <QObject>

#include <memory>

namespace rataip::host {

/**
 * Reports Ctrl-C, the system's request to end and the end of the terminal as a signal in the event
 * loop, so that the program can end in order. If it cannot be set up, Ctrl-C ends the program at
 * once, as usual.
 *
 * Only the first request is reported. A second Ctrl-C ends the program at once, even when it hangs.
 * Start threads that must exist earlier under an EndRequestBlocker. At most one Interrupt may exist
 * at a time.
 */
class Interrupt : public QObject {
    Q_OBJECT

public:
    Interrupt();
    ~Interrupt() override;

signals:
    void requested();

private:
    class Listener;
    std::unique_ptr<Listener> m_listener;
};

}  // namespace rataip::host
