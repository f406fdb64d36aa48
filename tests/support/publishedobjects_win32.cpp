#include "tests/support/publishedobjects.h"

#include <windows.h>

namespace testsupport {

namespace {

constexpr const wchar_t* kBlockName = L"Local\\IRSDKMemMapFileName";
constexpr const wchar_t* kEventName = L"Local\\IRSDKDataValidEvent";
constexpr const wchar_t* kBroadcastName = L"IRSDK_BROADCASTMSG";
constexpr const wchar_t* kWindowClass = L"RataipTestBroadcastReceiver";
constexpr DWORD kSettleTime = 200;  // milliseconds for a message to cross from another process

void closeHandle(HANDLE& handle) {
    if (handle != nullptr) {
        CloseHandle(handle);
    }
    handle = nullptr;
}

}  // namespace

struct PublishedObjects::Objects {
    HANDLE mapping = nullptr;
    HANDLE event = nullptr;
    void* view = nullptr;
    std::size_t size = 0;
    EventKind kind = EventKind::AutoReset;

    void removeBlock() {
        if (view != nullptr) {
            UnmapViewOfFile(view);
        }
        view = nullptr;
        size = 0;
        closeHandle(mapping);
    }
};

PublishedObjects::PublishedObjects() : m_objects(std::make_unique<Objects>()) {}

PublishedObjects::~PublishedObjects() {
    removeBlock();
    removeEvent();
}

// Objects go with the process that had them open.
void PublishedObjects::removeLeftovers() {}

bool PublishedObjects::createBlock(std::size_t size) {
    removeBlock();
    if (size == 0) {
        return false;
    }
    constexpr unsigned int kHalf = 32;
    const auto bytes = static_cast<std::uint64_t>(size);
    m_objects->mapping = CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE,
                                            static_cast<DWORD>(bytes >> kHalf),
                                            static_cast<DWORD>(bytes), kBlockName);
    if (m_objects->mapping == nullptr) {
        return false;
    }
    m_objects->view = MapViewOfFile(m_objects->mapping, FILE_MAP_WRITE, 0, 0, size);
    m_objects->size = m_objects->view == nullptr ? 0 : size;
    return m_objects->view != nullptr;
}

bool PublishedObjects::createEvent(EventKind kind) {
    removeEvent();
    m_objects->kind = kind;
    m_objects->event =
        CreateEventW(nullptr, kind == EventKind::ManualReset ? TRUE : FALSE, FALSE, kEventName);
    return m_objects->event != nullptr;
}

char* PublishedObjects::block() const {
    return static_cast<char*>(m_objects->view);
}
std::size_t PublishedObjects::blockSize() const {
    return m_objects->size;
}

bool PublishedObjects::signalEvent() {
    if (m_objects->event == nullptr) {
        return false;
    }
    return m_objects->kind == EventKind::ManualReset ? PulseEvent(m_objects->event) != 0
                                                     : SetEvent(m_objects->event) != 0;
}

// Sections keep their size, and owners of objects are not changed from here.
bool PublishedObjects::truncateBlock(std::size_t /*size*/) {
    return false;
}
bool PublishedObjects::truncateEvent() {
    return false;
}
bool PublishedObjects::giveBlockTo(unsigned int /*user*/) {
    return false;
}
bool PublishedObjects::giveEventTo(unsigned int /*user*/) {
    return false;
}

void PublishedObjects::removeBlock() {
    m_objects->removeBlock();
}
void PublishedObjects::removeEvent() {
    closeHandle(m_objects->event);
}

struct BroadcastReceiver::Queue {
    HWND window = nullptr;
    UINT number = 0;
    std::vector<BroadcastMessage> messages;

    static LRESULT CALLBACK receive(HWND window, UINT number, WPARAM wParam, LPARAM lParam) {
        auto* queue = reinterpret_cast<Queue*>(GetWindowLongPtrW(window, GWLP_USERDATA));
        if (queue != nullptr && number == queue->number) {
            queue->messages.push_back({number, static_cast<std::int64_t>(wParam), lParam});
            return 0;
        }
        return DefWindowProcW(window, number, wParam, lParam);
    }
};

// A broadcast reaches top-level windows, shown or not; a message-only window would not do.
BroadcastReceiver::BroadcastReceiver(int /*capacity*/) : m_queue(std::make_unique<Queue>()) {
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = Queue::receive;
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.lpszClassName = kWindowClass;
    RegisterClassW(&windowClass);
    m_queue->number = RegisterWindowMessageW(kBroadcastName);
    m_queue->window = CreateWindowW(kWindowClass, L"", WS_OVERLAPPED, 0, 0, 0, 0, nullptr, nullptr,
                                    windowClass.hInstance, nullptr);
    if (m_queue->window != nullptr) {
        SetWindowLongPtrW(m_queue->window, GWLP_USERDATA,
                          reinterpret_cast<LONG_PTR>(m_queue.get()));
    }
}

BroadcastReceiver::~BroadcastReceiver() {
    if (m_queue->window != nullptr) {
        DestroyWindow(m_queue->window);
    }
}

bool BroadcastReceiver::isReady() const {
    return m_queue->window != nullptr && m_queue->number != 0;
}

std::vector<BroadcastMessage> BroadcastReceiver::take() {
    const ULONGLONG end = GetTickCount64() + kSettleTime;
    do {
        MSG message{};
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != 0) {
            DispatchMessageW(&message);
        }
        Sleep(1);
    } while (m_queue->messages.empty() && GetTickCount64() < end);
    return std::move(m_queue->messages);
}

}  // namespace testsupport
