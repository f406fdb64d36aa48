#include "tools/host/endrequests_linux.h"

namespace rataip::host {

namespace {

bool isIgnored(int number) {
    struct sigaction action {};
    return sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

}  // namespace

sigset_t endRequests() {
    sigset_t requests;
    sigemptyset(&requests);
    sigaddset(&requests, SIGINT);
    sigaddset(&requests, SIGTERM);
    // A blocked signal would be delivered by signalfd even when it is ignored.
    if (!isIgnored(SIGHUP)) {
        sigaddset(&requests, SIGHUP);
    }
    return requests;
}

}  // namespace rataip::host
