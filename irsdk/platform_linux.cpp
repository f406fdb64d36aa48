#include "irsdk/platform.h"

#include <array>
#include <bit>
#include <cerrno>
#include <ctime>
#include <fcntl.h>
#include <linux/futex.h>
#include <mqueue.h>
#include <optional>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace irsdk {

namespace {

constexpr auto kBlockName = irsdk_linuxName(IRSDK_MEMMAPFILENAME);
constexpr auto kEventName = irsdk_linuxName(IRSDK_DATAVALIDEVENTNAME);
constexpr auto kBroadcastName = irsdk_linuxName(IRSDK_BROADCASTMSGNAME);

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

    /** Maps the first `size` bytes; their pages go away when the object is cut off. */
    [[nodiscard]] bool map(std::size_t size) {
        void* view = mmap(nullptr, size, PROT_READ, MAP_SHARED, m_descriptor, 0);
        if (view == MAP_FAILED) {
            return false;
        }
        m_view = static_cast<char*>(view);
        m_mapped = size;
        return true;
    }
    [[nodiscard]] const char* view() const { return m_view; }

    /** Copies bytes of the object; false when it does not have them all. */
    [[nodiscard]] bool read(std::int64_t offset, std::size_t length, void* into) const {
        auto* to = static_cast<char*>(into);
        while (length > 0) {
            const ssize_t count = pread(m_descriptor, to, length, offset);
            if (count > 0) {
                to += count;
                offset += count;
                length -= static_cast<std::size_t>(count);
            } else if (count == 0 || errno != EINTR) {
                return false;
            }
        }
        return true;
    }

    /**
     * Whether the object has `size` bytes. Nothing else uses the position in the file, and to move
     * it costs a third of fstat().
     */
    [[nodiscard]] bool reaches(std::size_t size) const {
        return lseek(m_descriptor, 0, SEEK_END) >= static_cast<off_t>(size);
    }

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
        if (m_view != nullptr) {
            munmap(m_view, m_mapped);
        }
        if (m_descriptor >= 0) {
            ::close(m_descriptor);
        }
        m_view = nullptr;
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
    char* m_view = nullptr;
    std::size_t m_mapped = 0;
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

void sleepUntil(const timespec& end) {
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &end, nullptr) == EINTR) {
    }
}

/**
 * Sleeps on a counter in shared memory while it has the value `armed`, until `end`. True when it is
 * worth looking at the counter again. A read-only view is enough for the kernel to find the futex.
 * Where it finds none, because the page is gone, the time is slept out, so that a caller in a loop
 * does not spin.
 */
bool sleepOnFutex(const char* counter, std::uint32_t armed, const timespec& end) {
    const long result = syscall(SYS_futex, counter, FUTEX_WAIT_BITSET, armed, &end, nullptr,
                                FUTEX_BITSET_MATCH_ANY);
    if (result == 0 || errno == EINTR || errno == EAGAIN) {
        return true;
    }
    sleepUntil(end);
    return false;
}

}  // namespace

struct BlockObject::Handle : SharedObject {};

BlockObject::BlockObject() : m_handle(std::make_unique<Handle>()) {}
BlockObject::~BlockObject() = default;

irsdk_Error BlockObject::open() {
    return m_handle->open(kBlockName.data(), irsdk_Error::NoBlock, irsdk_Error::ForeignBlock);
}

bool BlockObject::isOpen() const {
    return m_handle->isOpen();
}

irsdk_Error BlockObject::map() {
    const std::size_t size = m_handle->size();
    if (size < sizeof(irsdk_header)) {
        return irsdk_Error::BlockTooSmall;
    }
    if (size > kLargestBlock) {
        return irsdk_Error::BlockTooLarge;
    }
    if (!m_handle->map(size)) {
        return irsdk_Error::MapFailed;
    }
    m_memory = BlockMemory(m_handle->view(), size);
    return irsdk_Error::None;
}

// The kernel copies out of the pages without a lock and, as it happens, in ascending order; it
// promises neither. But each call takes hold of its pages before it copies, by an atomic operation
// that no access to memory passes. So what must be read before or after something else is read by a
// call of its own.
bool BlockObject::read(std::int64_t offset, std::size_t length, void* into) const {
    return m_handle->read(offset, length, into);
}

bool BlockObject::isWhole() const {
    return m_handle->reaches(static_cast<std::size_t>(m_memory.size()));
}

bool BlockObject::isAbandoned() const {
    return !m_handle->hasName();
}

void BlockObject::close() {
    m_memory = BlockMemory();
    m_handle->close();
}

struct DataValidEvent::Handle : SharedObject {
    std::uint32_t armed = 0;

    /** Takes the counter as it stands; one that was cut off counts as unmoved. */
    void arm() { static_cast<void>(read(0, sizeof armed, &armed)); }

    [[nodiscard]] std::optional<std::uint32_t> counter() const {
        std::uint32_t counter = 0;
        return read(0, sizeof counter, &counter) ? std::optional(counter) : std::nullopt;
    }
};

DataValidEvent::DataValidEvent() : m_handle(std::make_unique<Handle>()) {}
DataValidEvent::~DataValidEvent() = default;

irsdk_Error DataValidEvent::open() {
    const irsdk_Error error =
        m_handle->open(kEventName.data(), irsdk_Error::NoEvent, irsdk_Error::ForeignEvent);
    if (error != irsdk_Error::None) {
        return error;
    }
    constexpr std::size_t kCounterSize = sizeof(std::uint32_t);
    // Between its creation and its first size it is no event yet.
    if (m_handle->size() < kCounterSize) {
        m_handle->close();
        return irsdk_Error::NoEvent;
    }
    if (!m_handle->map(kCounterSize)) {
        m_handle->close();
        return irsdk_Error::MapFailed;
    }
    return irsdk_Error::None;
}

bool DataValidEvent::isOpen() const {
    return m_handle->isOpen();
}

void DataValidEvent::arm() {
    m_handle->arm();
}

void DataValidEvent::rearm() {
    arm();
}

void DataValidEvent::wait(int timeOut) {
    const timespec end = monotonicTimeIn(timeOut);
    std::optional<std::uint32_t> counter = m_handle->counter();
    while (counter == m_handle->armed && sleepOnFutex(m_handle->view(), m_handle->armed, end)) {
        counter = m_handle->counter();
    }
    // A counter of which bytes were cut off tells nothing, and its page may still be there.
    if (!counter) {
        sleepUntil(end);
    }
    // Whatever the caller looks at next, a completion after this moment ends the next wait.
    arm();
}

bool DataValidEvent::waitOn(int timeOut) {
    wait(timeOut);
    return true;
}

void DataValidEvent::close() {
    m_handle->close();
}

void sleepFor(int milliseconds) {
    sleepUntil(monotonicTimeIn(milliseconds));
}

std::int64_t systemSeconds() {
    return std::time(nullptr);
}

unsigned int registerBroadcastMessage() {
    return kBroadcastMessage;
}

void sendBroadcastMessage(unsigned int message, std::int64_t wParam, std::int64_t lParam) {
    const mqd_t queue = mq_open(kBroadcastName.data(), O_WRONLY | O_NONBLOCK);
    if (queue == static_cast<mqd_t>(-1)) {
        return;
    }
    const std::array<std::int64_t, 3> content{message, wParam, lParam};
    mq_send(queue, reinterpret_cast<const char*>(content.data()), sizeof content, 0);
    mq_close(queue);
}

}  // namespace irsdk
