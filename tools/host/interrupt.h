#pragma once

#include <QObject>

#include <memory>

namespace rataip::host {

/**
 * Turns the user's Ctrl-C (and a request to end that the system sends, or the end of the terminal)
 * into a signal in the event loop, so that the program ends in order. When the system refuses to be
 * listened to, Ctrl-C ends the program at once, as it does any other.
 *
 * The first request is reported; a second Ctrl-C ends the program at once, even when it hangs.
 * Threads that are there before it must be DeafThreads. At most one at a time.
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
