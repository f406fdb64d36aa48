#include "irsdk/layout.h"
#include "tools/simulator/publisher.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <windows.h>

namespace simulator {

namespace {

constexpr wchar_t kBlockName[] = L"Local\\IRSDKMemMapFileName";
constexpr wchar_t kEventName[] = L"Local\\IRSDKDataValidEvent";
constexpr wchar_t kMessageName[] = L"IRSDK_BROADCASTMSG";
constexpr wchar_t kWindowClass[] = L"rataip-simulator";

// Held by the process that publishes; the block itself outlives a publisher as long as a reader
// keeps it open, and says nothing about whether somebody writes it.
constexpr wchar_t kClaimName[] = L"Local\\rataip-simulator-publishes";

std::string because(const char* what) {
    return std::string(what) + " failed with error " + std::to_string(::GetLastError()) + ".";
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
            ::CloseHandle(m_handle);
        }
        m_handle = handle;
    }
    HANDLE get() const { return m_handle; }
    bool isOpen() const { return m_handle != nullptr; }

private:
    HANDLE m_handle = nullptr;
};

class Win32Publisher : public Publisher {
public:
    Win32Publisher() = default;
    ~Win32Publisher() override;
    Win32Publisher(const Win32Publisher&) = delete;
    Win32Publisher& operator=(const Win32Publisher&) = delete;

    std::string open(std::size_t bytes) override;
    void signal() override { ::SetEvent(m_event.get()); }
    std::vector<BroadcastMessage> takeMessages() override;
    bool stopRequested() const override { return m_stopRequested; }

    const std::string& remark() const override { return m_remark; }
    std::span<std::byte> memory() const override { return {m_block, m_size}; }

private:
    std::string openBlock(std::size_t bytes);
    bool anotherWrites() const;
    void openWindow();
    static LRESULT CALLBACK receive(HWND window, UINT message, WPARAM wparam, LPARAM lparam);

    Handle m_claim;
    Handle m_mapping;
    Handle m_event;
    std::byte* m_block = nullptr;
    std::size_t m_size = 0;
    HWND m_window = nullptr;
    UINT m_message = 0;
    std::vector<BroadcastMessage> m_messages;
    bool m_stopRequested = false;
    std::string m_remark;
};

Win32Publisher::~Win32Publisher() {
    if (m_window != nullptr) {
        ::DestroyWindow(m_window);
    }
    if (m_block != nullptr) {
        ::UnmapViewOfFile(m_block);
    }
}

std::string Win32Publisher::open(std::size_t bytes) {
    m_claim.reset(::CreateMutexW(nullptr, FALSE, kClaimName));
    if (!m_claim.isOpen()) {
        return because("Claiming the telemetry block");
    }
    if (::GetLastError() == ERROR_ALREADY_EXISTS) {
        return "Another simulator is publishing on this machine.";
    }
    if (std::string complaint = openBlock(bytes); !complaint.empty()) {
        return complaint;
    }
    // One waiting reader wakes for each completed buffer.
    m_event.reset(::CreateEventW(nullptr, FALSE, FALSE, kEventName));
    if (!m_event.isOpen()) {
        return because("Creating the data-valid event");
    }
    openWindow();
    return {};
}

std::string Win32Publisher::openBlock(std::size_t bytes) {
    const auto size = static_cast<unsigned long long>(bytes);
    m_mapping.reset(::CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE,
                                         static_cast<DWORD>(size >> 32U), static_cast<DWORD>(size),
                                         kBlockName));
    if (!m_mapping.isOpen()) {
        return because("Creating the telemetry block");
    }
    const bool existed = ::GetLastError() == ERROR_ALREADY_EXISTS;
    void* view = ::MapViewOfFile(m_mapping.get(), FILE_MAP_ALL_ACCESS, 0, 0, bytes);
    if (view == nullptr) {
        return existed ? "A reader still holds a smaller block of an earlier simulator; it has to "
                         "let go first."
                       : because("Mapping the telemetry block");
    }
    m_block = static_cast<std::byte*>(view);
    m_size = bytes;
    if (existed && anotherWrites()) {
        return "Another simulator is publishing on this machine.";
    }
    return {};
}

// A block that nobody writes any more keeps the status bit of the day when its publisher crashed,
// but its ticks stand still.
bool Win32Publisher::anotherWrites() const {
    constexpr DWORD kLookMilliseconds = 250;
    irsdk_header before{};
    irsdk_header after{};
    std::memcpy(&before, m_block, sizeof before);
    ::Sleep(kLookMilliseconds);
    std::memcpy(&after, m_block, sizeof after);
    return (after.status & irsdk_stConnected) != 0 &&
           before.varBuf[0].tickCount != after.varBuf[0].tickCount;
}

// Broadcasts reach top-level windows only, so this is one, though it is never shown.
void Win32Publisher::openWindow() {
    m_message = ::RegisterWindowMessageW(kMessageName);
    WNDCLASSEXW description{};
    description.cbSize = sizeof description;
    description.lpfnWndProc = &Win32Publisher::receive;
    description.hInstance = ::GetModuleHandleW(nullptr);
    description.lpszClassName = kWindowClass;
    ::RegisterClassExW(&description);
    m_window = ::CreateWindowExW(0, kWindowClass, L"", WS_OVERLAPPED, 0, 0, 0, 0, nullptr, nullptr,
                                 description.hInstance, nullptr);
    if (m_window == nullptr || m_message == 0) {
        m_remark = "Broadcast messages cannot be received: " + because("creating a window");
        return;
    }
    ::SetWindowLongPtrW(m_window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
}

LRESULT CALLBACK Win32Publisher::receive(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    auto* self = reinterpret_cast<Win32Publisher*>(::GetWindowLongPtrW(window, GWLP_USERDATA));
    if (self != nullptr && message == WM_CLOSE) {
        // The window stays until the run has ended in order.
        self->m_stopRequested = true;
        return 0;
    }
    if (self == nullptr || message != self->m_message) {
        return ::DefWindowProcW(window, message, wparam, lparam);
    }
    self->m_messages.push_back({static_cast<std::int64_t>(message),
                                static_cast<std::int64_t>(wparam),
                                static_cast<std::int64_t>(lparam)});
    return 0;
}

std::vector<BroadcastMessage> Win32Publisher::takeMessages() {
    MSG message{};
    while (m_window != nullptr && ::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != 0) {
        ::DispatchMessageW(&message);
    }
    std::vector<BroadcastMessage> taken;
    taken.swap(m_messages);
    return taken;
}

}  // namespace

std::unique_ptr<Publisher> Publisher::make() {
    return std::make_unique<Win32Publisher>();
}

}  // namespace simulator
