#include "irsdk/layout.h"
#include "tests/support/publishedobjects.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace testsupport {

namespace {

constexpr auto kBlockName = irsdk_linuxName(IRSDK_MEMMAPFILENAME);
constexpr auto kEventName = irsdk_linuxName(IRSDK_DATAVALIDEVENTNAME);

/** Does something to the object of that name; false when there is none or it fails. */
template <typename Change>
bool change(const char* name, Change change) {
    const int descriptor = shm_open(name, O_RDWR, 0);
    const bool changed = descriptor >= 0 && change(descriptor) == 0;
    close(descriptor);
    return changed;
}

bool truncate(const char* name, std::size_t size) {
    return change(name, [size](int object) { return ftruncate(object, static_cast<off_t>(size)); });
}

bool give(const char* name, unsigned int user) {
    return change(name,
                  [user](int object) { return fchown(object, user, static_cast<gid_t>(-1)); });
}

}  // namespace

bool PublishedObjects::truncateBlock(std::size_t size) {
    m_cutTo = size;
    return truncate(kBlockName.data(), size);
}
bool PublishedObjects::truncateEvent(std::size_t size) {
    return truncate(kEventName.data(), size);
}
bool PublishedObjects::giveBlockTo(unsigned int user) {
    return give(kBlockName.data(), user);
}
bool PublishedObjects::giveEventTo(unsigned int user) {
    return give(kEventName.data(), user);
}

std::vector<publisher::BroadcastMessage> BroadcastReceiver::take() {
    return m_receiver.take();
}

}  // namespace testsupport
