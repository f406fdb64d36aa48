#include "tests/support/publishedobjects.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <climits>
#include <fcntl.h>
#include <linux/futex.h>
#include <mqueue.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace testsupport {

namespace {

constexpr const char* kBlockName = "/IRSDKMemMapFileName";
constexpr const char* kEventName = "/IRSDKDataValidEvent";
constexpr const char* kBroadcastName = "/IRSDK_BROADCASTMSG";
constexpr mode_t kOwnerOnly = 0600;
constexpr std::size_t kCounterSize = sizeof(std::uint32_t);

/** A shared-memory object that we write. */
class WritableObject {
public:
    explicit WritableObject(const char* name) : m_name(name) {}
    ~WritableObject() { remove(); }
    WritableObject(const WritableObject&) = delete;
    WritableObject& operator=(const WritableObject&) = delete;

    [[nodiscard]] bool create(std::size_t size) {
        release();
        m_descriptor = shm_open(m_name, O_RDWR | O_CREAT, kOwnerOnly);
        if (m_descriptor < 0) {
            return false;
        }
        struct stat state {};
        fstat(m_descriptor, &state);
        const bool longEnough = static_cast<std::size_t>(state.st_size) >= size;
        if (!longEnough && ftruncate(m_descriptor, static_cast<off_t>(size)) != 0) {
            return false;
        }
        if (size == 0) {
            return true;
        }
        void* view = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, m_descriptor, 0);
        if (view == MAP_FAILED) {
            return false;
        }
        m_view = view;
        m_mapped = size;
        m_size = size;
        return true;
    }

    [[nodiscard]] char* data() const { return static_cast<char*>(m_view); }

    /** Bytes that can be written: what is mapped and was not cut off. */
    [[nodiscard]] std::size_t size() const { return std::min(m_mapped, m_size); }

    bool truncate(std::size_t size) {
        m_size = size;
        return m_descriptor >= 0 && ftruncate(m_descriptor, static_cast<off_t>(size)) == 0;
    }

    bool giveTo(uid_t user) {
        return m_descriptor >= 0 && fchown(m_descriptor, user, static_cast<gid_t>(-1)) == 0;
    }

    void remove() {
        if (m_descriptor >= 0) {
            shm_unlink(m_name);
        }
        release();
    }

private:
    void release() {
        if (m_view != nullptr) {
            munmap(m_view, m_mapped);
        }
        if (m_descriptor >= 0) {
            close(m_descriptor);
        }
        m_view = nullptr;
        m_mapped = 0;
        m_size = 0;
        m_descriptor = -1;
    }

    const char* m_name;
    int m_descriptor = -1;
    void* m_view = nullptr;
    std::size_t m_mapped = 0;
    std::size_t m_size = 0;
};

}  // namespace

struct PublishedObjects::Objects {
    WritableObject block{kBlockName};
    WritableObject event{kEventName};
};

PublishedObjects::PublishedObjects() : m_objects(std::make_unique<Objects>()) {}
PublishedObjects::~PublishedObjects() = default;

void PublishedObjects::removeLeftovers() {
    shm_unlink(kBlockName);
    shm_unlink(kEventName);
}

bool PublishedObjects::createBlock(std::size_t size) {
    return m_objects->block.create(size);
}

// Every waiter sees the counter move, whatever kind of event it would be elsewhere.
bool PublishedObjects::createEvent(EventKind /*kind*/) {
    return m_objects->event.create(kCounterSize);
}

char* PublishedObjects::block() const {
    return m_objects->block.data();
}
std::size_t PublishedObjects::blockSize() const {
    return m_objects->block.size();
}

bool PublishedObjects::signalEvent() {
    char* counter = m_objects->event.data();
    if (m_objects->event.size() < kCounterSize) {
        return false;
    }
    std::atomic_ref<std::uint32_t>(*reinterpret_cast<std::uint32_t*>(counter)).fetch_add(1);
    syscall(SYS_futex, counter, FUTEX_WAKE, INT_MAX, nullptr, nullptr, 0);
    return true;
}

bool PublishedObjects::truncateBlock(std::size_t size) {
    return m_objects->block.truncate(size);
}
void PublishedObjects::removeBlock() {
    m_objects->block.remove();
}
void PublishedObjects::removeEvent() {
    m_objects->event.remove();
}
bool PublishedObjects::truncateEvent() {
    return m_objects->event.truncate(0);
}
bool PublishedObjects::giveBlockTo(unsigned int user) {
    return m_objects->block.giveTo(user);
}
bool PublishedObjects::giveEventTo(unsigned int user) {
    return m_objects->event.giveTo(user);
}

struct BroadcastReceiver::Queue {
    mqd_t descriptor = static_cast<mqd_t>(-1);
};

BroadcastReceiver::BroadcastReceiver(int capacity) : m_queue(std::make_unique<Queue>()) {
    mq_attr attributes{};
    attributes.mq_maxmsg = capacity;
    attributes.mq_msgsize = sizeof(std::array<std::int64_t, 3>);
    mq_unlink(kBroadcastName);
    m_queue->descriptor =
        mq_open(kBroadcastName, O_RDONLY | O_CREAT | O_EXCL | O_NONBLOCK, kOwnerOnly, &attributes);
}

BroadcastReceiver::~BroadcastReceiver() {
    if (isReady()) {
        mq_close(m_queue->descriptor);
        mq_unlink(kBroadcastName);
    }
}

bool BroadcastReceiver::isReady() const {
    return m_queue->descriptor != static_cast<mqd_t>(-1);
}

std::vector<BroadcastMessage> BroadcastReceiver::take() {
    std::vector<BroadcastMessage> messages;
    std::array<std::int64_t, 3> content{};
    while (mq_receive(m_queue->descriptor, reinterpret_cast<char*>(content.data()), sizeof content,
                      nullptr) == static_cast<ssize_t>(sizeof content)) {
        messages.push_back({static_cast<std::uint64_t>(content[0]), content[1], content[2]});
    }
    return messages;
}

}  // namespace testsupport
