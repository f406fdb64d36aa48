#include "irsdk/layout.h"
#include "tools/publisher/namedobjects.h"

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

namespace publisher {

namespace {

constexpr auto kBlockName = irsdk_linuxName(IRSDK_MEMMAPFILENAME);
constexpr auto kEventName = irsdk_linuxName(IRSDK_DATAVALIDEVENTNAME);
constexpr auto kQueueName = irsdk_linuxName(IRSDK_BROADCASTMSGNAME);
constexpr mode_t kOwnerOnly = 0600;
constexpr std::size_t kCounterSize = sizeof(std::uint32_t);
constexpr mqd_t kNoQueue = -1;

using MessageWords = std::array<std::int64_t, 3>;

std::string because(const char* what) {
    return std::string(what) + " failed: " + std::strerror(errno) + ".";
}

/** A shared-memory object that we write; ours as long as it is open. */
class WritableObject {
public:
    explicit WritableObject(const char* name) : m_name(name) {}
    ~WritableObject() { remove(); }
    WritableObject(const WritableObject&) = delete;
    WritableObject& operator=(const WritableObject&) = delete;

    [[nodiscard]] bool open() {
        close();
        m_descriptor = shm_open(m_name, O_RDWR | O_CREAT, kOwnerOnly);
        return m_descriptor >= 0;
    }

    /** Maps that many bytes, which the object gets if it has fewer. */
    [[nodiscard]] bool map(std::size_t bytes) {
        if (facts().st_size < static_cast<off_t>(bytes) &&
            ftruncate(m_descriptor, static_cast<off_t>(bytes)) != 0) {
            return false;
        }
        if (bytes == 0) {
            return true;
        }
        void* start = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED, m_descriptor, 0);
        if (start == MAP_FAILED) {
            return false;
        }
        m_bytes = {static_cast<std::byte*>(start), bytes};
        return true;
    }

    [[nodiscard]] int descriptor() const { return m_descriptor; }
    [[nodiscard]] std::span<std::byte> bytes() const { return m_bytes; }

    [[nodiscard]] struct stat facts() const {
        struct stat facts {};
        fstat(m_descriptor, &facts);
        return facts;
    }

    void remove() {
        if (m_descriptor >= 0) {
            shm_unlink(m_name);
        }
        close();
    }

    void close() {
        if (!m_bytes.empty()) {
            munmap(m_bytes.data(), m_bytes.size());
        }
        if (m_descriptor >= 0) {
            ::close(m_descriptor);
        }
        m_bytes = {};
        m_descriptor = -1;
    }

private:
    const char* m_name;
    int m_descriptor = -1;
    std::span<std::byte> m_bytes;
};

/**
 * Opens a fresh block and locks it. The lock belongs to the open file and ends with the process
 * that holds it, however that ends. So a block that can be locked has no publisher any more. Such a
 * block is not used again: a reader that still has it mapped must not see it change its size. It
 * loses its name and a new one takes it.
 */
std::string claimBlock(WritableObject& block) {
    constexpr int kAttempts = 10;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        if (!block.open()) {
            return because("Creating the telemetry block");
        }
        if (block.facts().st_uid != geteuid()) {
            block.close();
            return "The telemetry block belongs to another user.";
        }
        if (flock(block.descriptor(), LOCK_EX | LOCK_NB) != 0) {
            std::string complaint = errno == EWOULDBLOCK
                                        ? "Another simulator is publishing on this machine."
                                        : because("Locking the telemetry block");
            block.close();
            return complaint;
        }
        // Between opening and locking, its publisher may have removed it or somebody taken it over.
        const bool hasName = block.facts().st_nlink > 0;
        const bool isFresh = block.facts().st_size == 0;
        if (hasName && isFresh) {
            return {};
        }
        if (hasName) {
            shm_unlink(kBlockName.data());
        }
    }
    block.close();
    return "The telemetry block could not be claimed: others keep replacing it.";
}

}  // namespace

struct NamedObjects::Objects {
    // The last to go, since the lock on it keeps others from creating the names meanwhile.
    WritableObject block{kBlockName.data()};
    WritableObject event{kEventName.data()};
};

NamedObjects::NamedObjects() : m_objects(std::make_unique<Objects>()) {}
NamedObjects::~NamedObjects() = default;

std::string NamedObjects::claim(std::size_t bytes) {
    if (std::string complaint = claimBlock(m_objects->block); !complaint.empty()) {
        return complaint;
    }
    shm_unlink(kEventName.data());
    if (!createEvent()) {
        return because("Creating the data-valid event");
    }
    if (!m_objects->block.map(bytes)) {
        return because("Making room for the telemetry block");
    }
    return {};
}

bool NamedObjects::createBlock(std::size_t bytes) {
    return m_objects->block.open() && m_objects->block.map(bytes);
}

// Every waiter sees the counter move, whatever kind of event it would be elsewhere.
bool NamedObjects::createEvent(EventKind /*kind*/) {
    return m_objects->event.open() && m_objects->event.map(kCounterSize);
}

std::span<std::byte> NamedObjects::block() const {
    return m_objects->block.bytes();
}

bool NamedObjects::signalEvent() {
    if (m_objects->event.bytes().empty()) {
        return false;
    }
    auto* counter = reinterpret_cast<std::uint32_t*>(m_objects->event.bytes().data());
    std::atomic_ref<std::uint32_t>(*counter).fetch_add(1, std::memory_order_release);
    // Waiters are in other processes: not a private futex.
    syscall(SYS_futex, counter, FUTEX_WAKE, INT_MAX, nullptr, nullptr, 0);
    return true;
}

void NamedObjects::removeBlock() {
    m_objects->block.remove();
}
void NamedObjects::removeEvent() {
    m_objects->event.remove();
}

void NamedObjects::removeLeftovers() {
    shm_unlink(kBlockName.data());
    shm_unlink(kEventName.data());
}

struct BroadcastReceiver::Inbox {
    mqd_t queue = kNoQueue;
};

BroadcastReceiver::BroadcastReceiver() : m_inbox(std::make_unique<Inbox>()) {}

BroadcastReceiver::~BroadcastReceiver() {
    if (m_inbox->queue != kNoQueue) {
        mq_close(m_inbox->queue);
        mq_unlink(kQueueName.data());
    }
}

std::string BroadcastReceiver::open(int capacity) {
    mq_unlink(kQueueName.data());
    mq_attr attributes{};
    attributes.mq_maxmsg = capacity;
    attributes.mq_msgsize = sizeof(MessageWords);
    m_inbox->queue =
        mq_open(kQueueName.data(), O_RDONLY | O_CREAT | O_EXCL | O_NONBLOCK | O_CLOEXEC, kOwnerOnly,
                &attributes);
    return m_inbox->queue == kNoQueue
               ? "Broadcast messages cannot be received: " + because("creating their queue")
               : std::string();
}

std::vector<BroadcastMessage> BroadcastReceiver::take() {
    std::vector<BroadcastMessage> messages;
    MessageWords words{};
    // The queue was made for messages of this very size; a shorter one is nobody's.
    while (m_inbox->queue != kNoQueue) {
        const ssize_t bytes = mq_receive(m_inbox->queue, reinterpret_cast<char*>(words.data()),
                                         sizeof words, nullptr);
        if (bytes < 0) {
            break;
        }
        if (bytes == sizeof words) {
            messages.push_back({static_cast<std::uint64_t>(words[0]), words[1], words[2]});
        }
    }
    return messages;
}

bool BroadcastReceiver::isStopRequested() const {
    return false;
}

}  // namespace publisher
