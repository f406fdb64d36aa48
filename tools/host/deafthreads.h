#pragma once

#include <memory>

namespace rataip::host {

/**
 * Threads that begin while such an object lives are left alone by requests to end, so that
 * Interrupt gets them all. For what starts threads before there can be an Interrupt: the
 * application object.
 *
 * A request that comes meanwhile ends the program as soon as the object goes.
 */
class DeafThreads {
public:
    DeafThreads();
    ~DeafThreads();
    DeafThreads(const DeafThreads&) = delete;
    DeafThreads& operator=(const DeafThreads&) = delete;

private:
    class State;
    std::unique_ptr<State> m_before;
};

}  // namespace rataip::host
