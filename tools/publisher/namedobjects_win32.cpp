#include "irsdk/layout.h"
#include "tools/publisher/namedobjects.h"

#include <cstring>
#include <utility>
#include <windows.h>

namespace publisher {

namespace {

constexpr wchar_t kWindowClass[] = L"rataip-simulator";

// Held by the process that publishes; the block itself outlives a publisher as long as a reader
// keeps it open, and says nothing about whether somebody writes it.
constexpr wchar_t kClaimName[] = L"Local\\rataip-simulator-publishes";

std::string because(const char* what) {
    return std::string(what) + " failed with error " + std::to_string(GetLastError()) + ".";
}

/** A handle that is closed with its owner. */
class Handle {
public:
    Handle() = default;
    ~Handle() { reset(); }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    void reset(HANDLE handle = nullptr) {
        if (m_handle != nullptr) {
            CloseHandle(m_handle);
        }
        m_handle = handle;
    }
    [[nodiscard]] HANDLE get() const { return m_handle; }
    [[nodiscard]] bool isOpen() const { return m_handle != nullptr; }

private:
    HANDLE m_handle = nullptr;
};

/**
 * Whether the ticks of a block move. One that nobody writes any more keeps the status bit of the
 * day when its publisher crashed, but its ticks stand still.
 */
bool isBeingWritten(const void* block) {
    constexpr DWORD kLookMilliseconds = 250;
    irsdk_header before{};
    irsdk_header after{};
    std::memcpy(&before, block, sizeof before);
    Sleep(kLookMilliseconds);
    std::memcpy(&after, block, sizeof after);
    return (after.status & irsdk_stConnected) != 0 &&
           before.varBuf[0].tickCount != after.varBuf[0].tickCount;
}

}  // namespace

struct NamedObjects::Objects {
    Handle claim;
    Handle mapping;
    Handle event;
    EventKind kind = EventKind::AutoReset;
    void* view = nullptr;
    std::size_t size = 0;
    bool hasExisted = false;  // the block, before it was created

    ~Objects() { removeBlock(); }

    void removeBlock() {
        if (view != nullptr) {
            UnmapViewOfFile(view);
        }
        view = nullptr;
        size = 0;
        mapping.reset();
    }
};

NamedObjects::NamedObjects() : m_objects(std::make_unique<Objects>()) {}
NamedObjects::~NamedObjects() = default;

std::string NamedObjects::claim(std::size_t bytes) {
    m_objects->claim.reset(CreateMutexW(nullptr, FALSE, kClaimName));
    if (!m_objects->claim.isOpen()) {
        return because("Claiming the telemetry block");
    }
    if (GetLastError() == ERROR_ALREADY_EXISTS) {
        return "Another simulator is publishing on this machine.";
    }
    if (!createBlock(bytes)) {
        return !m_objects->mapping.isOpen() ? because("Creating the telemetry block")
               : !m_objects->hasExisted
                   ? because("Mapping the telemetry block")
                   : "A reader still holds a smaller block of an earlier simulator; it has to let "
                     "go first.";
    }
    if (m_objects->hasExisted && isBeingWritten(m_objects->view)) {
        return "Another simulator is publishing on this machine.";
    }
    // One waiting reader wakes for each completed buffer.
    return createEvent() ? std::string() : because("Creating the data-valid event");
}

bool NamedObjects::createBlock(std::size_t bytes) {
    m_objects->removeBlock();
    if (bytes == 0) {
        return false;
    }
    constexpr unsigned int kHalf = 32;
    const auto size = static_cast<std::uint64_t>(bytes);
    m_objects->mapping.reset(CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE,
                                                static_cast<DWORD>(size >> kHalf),
                                                static_cast<DWORD>(size), IRSDK_MEMMAPFILENAME));
    m_objects->hasExisted = GetLastError() == ERROR_ALREADY_EXISTS;
    if (!m_objects->mapping.isOpen()) {
        return false;
    }
    m_objects->view = MapViewOfFile(m_objects->mapping.get(), FILE_MAP_WRITE, 0, 0, bytes);
    m_objects->size = m_objects->view == nullptr ? 0 : bytes;
    return m_objects->view != nullptr;
}

bool NamedObjects::createEvent(EventKind kind) {
    // As long as the former event is open, its name leads to that one.
    m_objects->event.reset();
    m_objects->kind = kind;
    m_objects->event.reset(CreateEventW(nullptr, kind == EventKind::ManualReset ? TRUE : FALSE,
                                        FALSE, IRSDK_DATAVALIDEVENTNAME));
    return m_objects->event.isOpen();
}

std::span<std::byte> NamedObjects::block() const {
    return {static_cast<std::byte*>(m_objects->view), m_objects->size};
}

bool NamedObjects::signalEvent() {
    if (!m_objects->event.isOpen()) {
        return false;
    }
    return m_objects->kind == EventKind::ManualReset ? PulseEvent(m_objects->event.get()) != 0
                                                     : SetEvent(m_objects->event.get()) != 0;
}

void NamedObjects::removeBlock() {
    m_objects->removeBlock();
}
void NamedObjects::removeEvent() {
    m_objects->event.reset();
}

// Objects go with the process that had them open.
void NamedObjects::removeLeftovers() {}

struct BroadcastReceiver::Inbox {
    HWND window = nullptr;
    UINT number = 0;
    std::vector<BroadcastMessage> messages;
    bool isStopRequested = false;

    static LRESULT CALLBACK receive(HWND window, UINT number, WPARAM wParam, LPARAM lParam) {
        auto* inbox = reinterpret_cast<Inbox*>(GetWindowLongPtrW(window, GWLP_USERDATA));
        if (inbox != nullptr && number == WM_CLOSE) {
            // The window stays until the run has ended in order.
            inbox->isStopRequested = true;
            return 0;
        }
        if (inbox == nullptr || number != inbox->number) {
            return DefWindowProcW(window, number, wParam, lParam);
        }
        inbox->messages.push_back({number, static_cast<std::int64_t>(wParam), lParam});
        return 0;
    }
};

BroadcastReceiver::BroadcastReceiver() : m_inbox(std::make_unique<Inbox>()) {}

BroadcastReceiver::~BroadcastReceiver() {
    if (m_inbox->window != nullptr) {
        DestroyWindow(m_inbox->window);
    }
}

// Broadcasts reach top-level windows only, so this is one, though it is never shown.
std::string BroadcastReceiver::open(int /*capacity*/) {
    m_inbox->number = RegisterWindowMessageW(IRSDK_BROADCASTMSGNAME);
    WNDCLASSW description{};
    description.lpfnWndProc = &Inbox::receive;
    description.hInstance = GetModuleHandleW(nullptr);
    description.lpszClassName = kWindowClass;
    RegisterClassW(&description);
    m_inbox->window = CreateWindowW(kWindowClass, L"", WS_OVERLAPPED, 0, 0, 0, 0, nullptr, nullptr,
                                    description.hInstance, nullptr);
    if (m_inbox->window == nullptr || m_inbox->number == 0) {
        return "Broadcast messages cannot be received: " + because("creating a window");
    }
    SetWindowLongPtrW(m_inbox->window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(m_inbox.get()));
    return {};
}

std::vector<BroadcastMessage> BroadcastReceiver::take() {
    MSG message{};
    while (m_inbox->window != nullptr && PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != 0) {
        DispatchMessageW(&message);
    }
    return std::exchange(m_inbox->messages, {});
}

bool BroadcastReceiver::isStopRequested() const {
    return m_inbox->isStopRequested;
}

}  // namespace publisher
