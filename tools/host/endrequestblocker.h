#pragma once

#include <memory>

namespace rataip::host {

/**
 * Threads started while this object exists do not receive requests to end, so that Interrupt gets
 * them all. For code that starts threads before an Interrupt can exist: the application object.
 *
 * A request that arrives meanwhile ends the program as soon as the blocker is destroyed.
 */
class EndRequestBlocker {
public:
    EndRequestBlocker();
    ~EndRequestBlocker();
    EndRequestBlocker(const EndRequestBlocker&) = delete;
    EndRequestBlocker& operator=(const EndRequestBlocker&) = delete;

private:
    class State;
    std::unique_ptr<State> m_before;
};

}  // namespace rataip::host
