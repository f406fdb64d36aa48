#include "tools/simulator/publisher.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstring>
#include <fcntl.h>
#include <linux/futex.h>
#include <mqueue.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace simulator {

namespace {

constexpr char kBlockName[] = "/IRSDKMemMapFileName";
constexpr char kEventName[] = "/IRSDKDataValidEvent";
constexpr char kQueueName[] = "/IRSDK_BROADCASTMSG";

constexpr mode_t kOwnerOnly = 0600;
constexpr std::size_t kEventBytes = 4096;
constexpr long kQueuedMessages = 10;

using MessageWords = std::array<std::int64_t, 3>;

std::string because(const char* what) {
    return std::string(what) + " failed: " + std::strerror(errno) + ".";
}

/** A file descriptor that is closed with its owner. */
class Descriptor {
public:
    explicit Descriptor(int number = -1) : m_number(number) {}
    ~Descriptor() { reset(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    void reset(int number = -1) {
        if (m_number >= 0) {
            ::close(m_number);
        }
        m_number = number;
    }
    int get() const { return m_number; }
    bool isOpen() const { return m_number >= 0; }

private:
    int m_number;
};

/** Memory shared with the readers, unmapped with its owner. */
class Mapping {
public:
    Mapping() = default;
    ~Mapping() {
        if (m_start != nullptr) {
            ::munmap(m_start, m_size);
        }
    }
    Mapping(const Mapping&) = delete;
    Mapping& operator=(const Mapping&) = delete;

    bool map(int descriptor, std::size_t size) {
        void* start = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
        if (start == MAP_FAILED) {
            return false;
        }
        m_start = start;
        m_size = size;
        return true;
    }
    std::byte* start() const { return static_cast<std::byte*>(m_start); }
    std::size_t size() const { return m_size; }

private:
    void* m_start = nullptr;
    std::size_t m_size = 0;
};

class LinuxPublisher : public Publisher {
public:
    LinuxPublisher() = default;
    ~LinuxPublisher() override;
    LinuxPublisher(const LinuxPublisher&) = delete;
    LinuxPublisher& operator=(const LinuxPublisher&) = delete;

    std::string open(std::size_t bytes) override;
    void signal() override;
    std::vector<BroadcastMessage> takeMessages() override;

    const std::string& remark() const override { return m_remark; }
    std::span<std::byte> memory() const override { return {m_block.start(), m_block.size()}; }

private:
    std::string claimBlock();
    std::string openEvent();
    void openQueue();

    Descriptor m_blockFile;  // locked as long as this process publishes
    Mapping m_block;
    Mapping m_event;
    mqd_t m_queue = -1;
    bool m_ownsNames = false;
    std::string m_remark;
};

LinuxPublisher::~LinuxPublisher() {
    if (m_queue != -1) {
        ::mq_close(m_queue);
        ::mq_unlink(kQueueName);
    }
    if (m_ownsNames) {
        ::shm_unlink(kEventName);
        // Last, since the lock on it keeps others from creating the three names meanwhile.
        ::shm_unlink(kBlockName);
    }
}

std::string LinuxPublisher::open(std::size_t bytes) {
    if (std::string complaint = claimBlock(); !complaint.empty()) {
        return complaint;
    }
    m_ownsNames = true;
    if (std::string complaint = openEvent(); !complaint.empty()) {
        return complaint;
    }
    openQueue();
    if (::ftruncate(m_blockFile.get(), static_cast<off_t>(bytes)) != 0 ||
        !m_block.map(m_blockFile.get(), bytes)) {
        return because("Making room for the telemetry block");
    }
    return {};
}

// The lock belongs to the open file and ends with the process that holds it, however that ends. So
// a block that can be locked has no publisher any more. Such a block is not used again: a reader
// that still has it mapped must not see it change its size. It loses its name and a new one takes
// it.
std::string LinuxPublisher::claimBlock() {
    constexpr int kAttempts = 10;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        m_blockFile.reset(::shm_open(kBlockName, O_RDWR | O_CREAT, kOwnerOnly));
        if (!m_blockFile.isOpen()) {
            return because("Creating the telemetry block");
        }
        struct stat facts {};
        if (::fstat(m_blockFile.get(), &facts) != 0) {
            return because("Looking at the telemetry block");
        }
        if (facts.st_uid != ::geteuid()) {
            return "The telemetry block belongs to another user.";
        }
        if (::flock(m_blockFile.get(), LOCK_EX | LOCK_NB) != 0) {
            return errno == EWOULDBLOCK ? "Another simulator is publishing on this machine."
                                        : because("Locking the telemetry block");
        }
        // Between opening and locking, its publisher may have removed it or somebody taken it over.
        if (::fstat(m_blockFile.get(), &facts) != 0) {
            return because("Looking at the telemetry block");
        }
        const bool stillNamed = facts.st_nlink > 0;
        const bool fresh = facts.st_size == 0;
        if (stillNamed && fresh) {
            return {};
        }
        if (stillNamed) {
            ::shm_unlink(kBlockName);
        }
    }
    return "The telemetry block could not be claimed: others keep replacing it.";
}

std::string LinuxPublisher::openEvent() {
    ::shm_unlink(kEventName);
    const Descriptor file(::shm_open(kEventName, O_RDWR | O_CREAT | O_EXCL, kOwnerOnly));
    if (!file.isOpen() || ::ftruncate(file.get(), static_cast<off_t>(kEventBytes)) != 0 ||
        !m_event.map(file.get(), kEventBytes)) {
        return because("Creating the data-valid event");
    }
    return {};
}

void LinuxPublisher::openQueue() {
    ::mq_unlink(kQueueName);
    mq_attr attributes{};
    attributes.mq_maxmsg = kQueuedMessages;
    attributes.mq_msgsize = sizeof(MessageWords);
    m_queue = ::mq_open(kQueueName, O_RDONLY | O_CREAT | O_EXCL | O_NONBLOCK | O_CLOEXEC,
                        kOwnerOnly, &attributes);
    if (m_queue == -1) {
        m_remark = "Broadcast messages cannot be received: " + because("creating their queue");
    }
}

void LinuxPublisher::signal() {
    auto* counter = reinterpret_cast<std::uint32_t*>(m_event.start());
    std::atomic_ref<std::uint32_t>(*counter).fetch_add(1, std::memory_order_release);
    // Waiters are in other processes: not a private futex.
    ::syscall(SYS_futex, counter, FUTEX_WAKE, INT_MAX, nullptr, nullptr, 0);
}

std::vector<BroadcastMessage> LinuxPublisher::takeMessages() {
    std::vector<BroadcastMessage> messages;
    MessageWords words{};
    // The queue was made for messages of this very size; a shorter one is nobody's.
    while (m_queue != -1) {
        const ssize_t bytes =
            ::mq_receive(m_queue, reinterpret_cast<char*>(words.data()), sizeof words, nullptr);
        if (bytes < 0) {
            break;
        }
        if (bytes == sizeof words) {
            messages.push_back({words[0], words[1], words[2]});
        }
    }
    return messages;
}

}  // namespace

std::unique_ptr<Publisher> Publisher::make() {
    return std::make_unique<LinuxPublisher>();
}

}  // namespace simulator
