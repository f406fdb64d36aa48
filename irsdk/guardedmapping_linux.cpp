#include "irsdk/guardedmapping_linux.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <signal.h>
#include <sys/mman.h>

namespace irsdk {

namespace {

/**
 * A view that the handler knows. Written by the link's thread, read by the handler in any thread.
 */
struct GuardedRange {
    std::atomic<std::uintptr_t> begin{0};
    std::atomic<std::size_t> size{0};
    std::atomic<bool> lost{false};

    [[nodiscard]] bool isFree() const { return begin == 0; }
    [[nodiscard]] bool contains(std::uintptr_t address) const {
        const std::uintptr_t first = begin;
        return first != 0 && address >= first && address - first < size;
    }
};

static_assert(std::atomic<std::uintptr_t>::is_always_lock_free);

std::array<GuardedRange, 2> guardedRanges;  // the block and the event
struct sigaction previousAction;
bool handlerInstalled = false;

/** Puts private zeros in the place of the view; mmap is a plain system call, fit for a handler. */
bool replaceByZeros(GuardedRange& range) {
    void* view = reinterpret_cast<void*>(range.begin.load());
    range.lost = true;
    return mmap(view, range.size, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0) ==
           view;
}

bool coverMissingPage(const siginfo_t& info) {
    // Only the kernel tells an address; a signal sent by a process carries none.
    if (info.si_code <= 0) {
        return false;
    }
    const auto address = reinterpret_cast<std::uintptr_t>(info.si_addr);
    for (GuardedRange& range : guardedRanges) {
        if (range.contains(address)) {
            return replaceByZeros(range);
        }
    }
    return false;
}

/** What would have happened to a SIGBUS without this handler. */
void passOn(int signal, siginfo_t* info, void* context) {
    if ((previousAction.sa_flags & SA_SIGINFO) != 0) {
        previousAction.sa_sigaction(signal, info, context);
        return;
    }
    const bool sentByProcess = info->si_code <= 0;
    if (previousAction.sa_handler == SIG_IGN && sentByProcess) {
        return;
    }
    if (previousAction.sa_handler == SIG_DFL || previousAction.sa_handler == SIG_IGN) {
        struct sigaction standard {};
        standard.sa_handler = SIG_DFL;
        sigaction(signal, &standard, nullptr);
        raise(signal);
        return;
    }
    previousAction.sa_handler(signal);
}

void onBusError(int signal, siginfo_t* info, void* context) {
    const int error = errno;
    if (!coverMissingPage(*info)) {
        passOn(signal, info, context);
    }
    errno = error;
}

bool isOurs(const struct sigaction& action) {
    return (action.sa_flags & SA_SIGINFO) != 0 && action.sa_sigaction == onBusError;
}

bool isNobodys(const struct sigaction& action) {
    return (action.sa_flags & SA_SIGINFO) == 0 && action.sa_handler == SIG_DFL;
}

/**
 * A handler that somebody put on top of ours stays there: it may call ours, and putting ours on top
 * of it again would make the two call each other for ever.
 */
void installHandler() {
    struct sigaction current {};
    sigaction(SIGBUS, nullptr, &current);
    if (isOurs(current) || (handlerInstalled && !isNobodys(current))) {
        return;
    }
    struct sigaction ours {};
    ours.sa_sigaction = onBusError;
    ours.sa_flags = SA_SIGINFO | SA_ONSTACK;
    sigemptyset(&ours.sa_mask);
    previousAction = current;
    handlerInstalled = sigaction(SIGBUS, &ours, nullptr) == 0;
}

void removeHandler() {
    struct sigaction current {};
    sigaction(SIGBUS, nullptr, &current);
    if (isOurs(current)) {
        handlerInstalled = sigaction(SIGBUS, &previousAction, nullptr) != 0;
    }
}

/** Announces a view to the handler; its slot, or -1 when all are taken. */
int guard(void* view, std::size_t size) {
    for (std::size_t slot = 0; slot < guardedRanges.size(); ++slot) {
        GuardedRange& range = guardedRanges[slot];
        if (range.isFree()) {
            range.lost = false;
            range.size = size;
            range.begin = reinterpret_cast<std::uintptr_t>(view);
            installHandler();
            return static_cast<int>(slot);
        }
    }
    return -1;
}

void unguard(int slot) {
    guardedRanges[static_cast<std::size_t>(slot)].begin = 0;
    if (std::all_of(guardedRanges.begin(), guardedRanges.end(),
                    [](const GuardedRange& range) { return range.isFree(); })) {
        removeHandler();
    }
}

}  // namespace

bool GuardedMapping::map(int descriptor, std::size_t size) {
    unmap();
    void* view = mmap(nullptr, size, PROT_READ, MAP_SHARED, descriptor, 0);
    if (view == MAP_FAILED) {
        return false;
    }
    m_data = view;
    m_size = size;
    m_slot = guard(view, size);
    if (m_slot < 0) {
        unmap();
    }
    return m_data != nullptr;
}

void GuardedMapping::unmap() {
    if (m_slot >= 0) {
        unguard(m_slot);
    }
    if (m_data != nullptr) {
        munmap(m_data, m_size);
    }
    m_data = nullptr;
    m_size = 0;
    m_slot = -1;
}

bool GuardedMapping::isIntact() const {
    return m_slot >= 0 && !guardedRanges[static_cast<std::size_t>(m_slot)].lost;
}

}  // namespace irsdk
