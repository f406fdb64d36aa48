#include "tests/support/publishedobjects.h"

#include <windows.h>

namespace testsupport {

// Sections keep their size, and owners of objects are not changed from here.
bool PublishedObjects::truncateBlock(std::size_t /*size*/) {
    return false;
}
bool PublishedObjects::truncateEvent(std::size_t /*size*/) {
    return false;
}
bool PublishedObjects::giveBlockTo(unsigned int /*user*/) {
    return false;
}
bool PublishedObjects::giveEventTo(unsigned int /*user*/) {
    return false;
}

std::vector<publisher::BroadcastMessage> BroadcastReceiver::take() {
    constexpr DWORD kSettleTime = 200;  // milliseconds for a message to cross from another process
    const ULONGLONG end = GetTickCount64() + kSettleTime;
    std::vector<publisher::BroadcastMessage> messages;
    do {
        messages = m_receiver.take();
        Sleep(1);
    } while (messages.empty() && GetTickCount64() < end);
    return messages;
}

}  // namespace testsupport
