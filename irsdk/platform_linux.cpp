#include "irsdk/guardedmapping_linux.h"
#include "irsdk/platform.h"

#include <array>
#include <bit>
#include <cerrno>
#include <climits>
#include <ctime>
#include <fcntl.h>
#include <linux/futex.h>
#include <mqueue.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace irsdk {

namespace {

// An object's Windows name keeps the part after its last backslash.
constexpr const char* kBlockName = "/IRSDKMemMapFileName";
constexpr const char* kEventName = "/IRSDKDataValidEvent";
constexpr const char* kBroadcastName = "/IRSDK_BROADCASTMSG";

// Any number of the range in which Windows registers messages; receivers here do not compare it.
constexpr unsigned int kBroadcastMessage = 0xC0DA;

constexpr long kNanosecondsASecond = 1'000'000'000;
constexpr long kNanosecondsAMillisecond = 1'000'000;
constexpr int kMillisecondsASecond = 1000;

static_assert(std::endian::native == std::endian::little, "the objects are little-endian");

/** A shared-memory object of our own user, opened for reading. */
class SharedObject {
public:
    SharedObject() = default;
    ~SharedObject() { close(); }
    SharedObject(const SharedObject&) = delete;
    SharedObject& operator=(const SharedObject&) = delete;

    /**
     * Never waits, since any user may put any kind of file under the name: opening a pipe would
     * wait for its writer, and a file under a lease for its holder. What is no regular object
     * counts as absent. Its kind is looked at before it is opened, which would do something to a
     * pipe or a device, and again after, since it may be another one by then.
     */
    [[nodiscard]] irsdk_Error open(const char* name, irsdk_Error absent, irsdk_Error foreign) {
        struct stat state {};
        m_descriptor = shm_open(name, O_PATH, 0);
        const bool isOther =
            m_descriptor >= 0 && fstat(m_descriptor, &state) == 0 && !S_ISREG(state.st_mode);
        close();
        if (isOther) {
            return absent;
        }
        m_descriptor = shm_open(name, O_RDONLY | O_NONBLOCK | O_NOCTTY, 0);
        if (m_descriptor < 0) {
            return reasonOf(errno, absent, foreign);
        }
        const irsdk_Error error = fstat(m_descriptor, &state) != 0 ? irsdk_Error::OpenFailed
                                  : !S_ISREG(state.st_mode)        ? absent
                                  : state.st_uid != geteuid()      ? foreign
                                                                   : irsdk_Error::None;
        if (error != irsdk_Error::None) {
            close();
        }
        return error;
    }

    [[nodiscard]] bool isOpen() const { return m_descriptor >= 0; }
    [[nodiscard]] int descriptor() const { return m_descriptor; }

    /** Bytes of the object, or 0 when the system cannot tell. */
    [[nodiscard]] std::size_t size() const {
        struct stat state {};
        return fstat(m_descriptor, &state) == 0 ? static_cast<std::size_t>(state.st_size) : 0;
    }

    [[nodiscard]] bool hasName() const {
        struct stat state {};
        return fstat(m_descriptor, &state) == 0 && state.st_nlink > 0;
    }

    void close() {
        if (m_descriptor >= 0) {
            ::close(m_descriptor);
        }
        m_descriptor = -1;
    }

private:
    static irsdk_Error reasonOf(int error, irsdk_Error absent, irsdk_Error foreign) {
        switch (error) {
            case ENOENT:
            case EWOULDBLOCK:  // somebody holds a lease on it
                return absent;
            case EACCES:
                return foreign;
            default:
                return irsdk_Error::OpenFailed;
        }
    }

    int m_descriptor = -1;
};

timespec monotonicTimeIn(int milliseconds) {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    time.tv_sec += milliseconds / kMillisecondsASecond;
    time.tv_nsec += milliseconds % kMillisecondsASecond * kNanosecondsAMillisecond;
    if (time.tv_nsec >= kNanosecondsASecond) {
        time.tv_nsec -= kNanosecondsASecond;
        ++time.tv_sec;
    }
    return time;
}

/**
 * Sleeps on a counter in shared memory while it has the value `armed`, until `end`. True when it is
 * worth looking at the counter again. A read-only view is enough for the kernel to find the futex.
 */
bool sleepOnFutex(const char* counter, std::uint32_t armed, const timespec& end) {
    const long result = syscall(SYS_futex, counter, FUTEX_WAIT_BITSET, armed, &end, nullptr,
                                FUTEX_BITSET_MATCH_ANY);
    return result == 0 || errno == EINTR;
}

}  // namespace

struct BlockObject::Handle {
    SharedObject object;
    GuardedMapping view;
};

BlockObject::BlockObject() : m_handle(std::make_unique<Handle>()) {}
BlockObject::~BlockObject() = default;

irsdk_Error BlockObject::open() {
    return m_handle->object.open(kBlockName, irsdk_Error::NoBlock, irsdk_Error::ForeignBlock);
}

bool BlockObject::isOpen() const {
    return m_handle->object.isOpen();
}

irsdk_Error BlockObject::map() {
    const std::size_t size = m_handle->object.size();
    if (size < sizeof(irsdk_header)) {
        return irsdk_Error::BlockTooSmall;
    }
    if (size > kLargestBlock) {
        return irsdk_Error::BlockTooLarge;
    }
    if (!m_handle->view.map(m_handle->object.descriptor(), size)) {
        return irsdk_Error::MapFailed;
    }
    m_memory = BlockMemory(m_handle->view.data(), size);
    m_mapped = true;
    return irsdk_Error::None;
}

bool BlockObject::isWhole() const {
    return isIntact() && m_handle->object.size() >= m_handle->view.size();
}

bool BlockObject::isIntact() const {
    return m_handle->view.isIntact();
}

bool BlockObject::isAbandoned() const {
    return !m_handle->object.hasName();
}

void BlockObject::close() {
    m_mapped = false;
    m_memory = BlockMemory();
    m_handle->view.unmap();
    m_handle->object.close();
}

struct DataValidEvent::Handle {
    SharedObject object;
    GuardedMapping view;
    std::uint32_t armed = 0;

    [[nodiscard]] std::uint32_t counter() const {
        return static_cast<std::uint32_t>(BlockMemory(view.data(), view.size()).read(0));
    }
};

DataValidEvent::DataValidEvent() : m_handle(std::make_unique<Handle>()) {}
DataValidEvent::~DataValidEvent() = default;

irsdk_Error DataValidEvent::open() {
    const irsdk_Error error =
        m_handle->object.open(kEventName, irsdk_Error::NoEvent, irsdk_Error::ForeignEvent);
    if (error != irsdk_Error::None) {
        return error;
    }
    constexpr std::size_t kCounterSize = sizeof(std::uint32_t);
    // Between its creation and its first size it is no event yet.
    if (m_handle->object.size() < kCounterSize) {
        m_handle->object.close();
        return irsdk_Error::NoEvent;
    }
    if (!m_handle->view.map(m_handle->object.descriptor(), kCounterSize)) {
        m_handle->object.close();
        return irsdk_Error::MapFailed;
    }
    return irsdk_Error::None;
}

bool DataValidEvent::isOpen() const {
    return m_handle->object.isOpen();
}

void DataValidEvent::arm() {
    m_handle->armed = m_handle->counter();
}

void DataValidEvent::rearm() {
    arm();
}

void DataValidEvent::wait(int timeOut) {
    const timespec end = monotonicTimeIn(timeOut);
    while (m_handle->counter() == m_handle->armed &&
           sleepOnFutex(m_handle->view.data(), m_handle->armed, end)) {
    }
    // Whatever the caller looks at next, a completion after this moment ends the next wait.
    arm();
}

bool DataValidEvent::waitOn(int timeOut) {
    wait(timeOut);
    return true;
}

void DataValidEvent::close() {
    m_handle->view.unmap();
    m_handle->object.close();
}

void sleepFor(int milliseconds) {
    const timespec end = monotonicTimeIn(milliseconds);
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &end, nullptr) == EINTR) {
    }
}

std::int64_t systemSeconds() {
    return std::time(nullptr);
}

unsigned int registerBroadcastMessage() {
    return kBroadcastMessage;
}

void sendBroadcastMessage(unsigned int message, std::int64_t wParam, std::int64_t lParam) {
    const mqd_t queue = mq_open(kBroadcastName, O_WRONLY | O_NONBLOCK);
    if (queue == static_cast<mqd_t>(-1)) {
        return;
    }
    const std::array<std::int64_t, 3> content{message, wParam, lParam};
    mq_send(queue, reinterpret_cast<const char*>(content.data()), sizeof content, 0);
    mq_close(queue);
}

}  // namespace irsdk
