#include "irsdk/platform.h"

#include <atomic>
#include <cstring>
#include <time.h>
#include <windows.h>

namespace irsdk {

namespace {

/**
 * Bytes of the view from its base on. The mapping's own size cannot be asked for, so the view may
 * look longer by up to a page; those bytes exist and are zero.
 */
std::size_t viewSize(const void* view) {
    MEMORY_BASIC_INFORMATION region{};
    return VirtualQuery(view, &region, sizeof region) == 0 ? 0 : region.RegionSize;
}

irsdk_Error reasonOf(DWORD error, irsdk_Error absent, irsdk_Error foreign) {
    switch (error) {
        case ERROR_FILE_NOT_FOUND:
            return absent;
        case ERROR_ACCESS_DENIED:
            return foreign;
        default:
            return irsdk_Error::OpenFailed;
    }
}

}  // namespace

struct BlockObject::Handle {
    HANDLE mapping = nullptr;
    void* view = nullptr;

    Handle() = default;
    ~Handle() { close(); }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    void close() {
        if (view != nullptr) {
            UnmapViewOfFile(view);
        }
        if (mapping != nullptr) {
            CloseHandle(mapping);
        }
        view = nullptr;
        mapping = nullptr;
    }
};

BlockObject::BlockObject() : m_handle(std::make_unique<Handle>()) {}
BlockObject::~BlockObject() = default;

irsdk_Error BlockObject::open() {
    m_handle->mapping = OpenFileMappingW(FILE_MAP_READ, FALSE, IRSDK_MEMMAPFILENAME);
    return m_handle->mapping != nullptr
               ? irsdk_Error::None
               : reasonOf(GetLastError(), irsdk_Error::NoBlock, irsdk_Error::ForeignBlock);
}

bool BlockObject::isOpen() const {
    return m_handle->mapping != nullptr;
}

irsdk_Error BlockObject::map() {
    void* view = MapViewOfFile(m_handle->mapping, FILE_MAP_READ, 0, 0, 0);
    if (view == nullptr) {
        return irsdk_Error::MapFailed;
    }
    const std::size_t size = viewSize(view);
    if (size < sizeof(irsdk_header) || size > kLargestBlock) {
        UnmapViewOfFile(view);
        return size > kLargestBlock ? irsdk_Error::BlockTooLarge : irsdk_Error::BlockTooSmall;
    }
    m_handle->view = view;
    m_memory = BlockMemory(static_cast<const char*>(view), size);
    return irsdk_Error::None;
}

// The fences keep the compiler and the processor from moving this copy before the one of an earlier
// call or after that of a later one.
bool BlockObject::read(std::int64_t offset, std::size_t length, void* into) const {
    std::atomic_thread_fence(std::memory_order_acquire);
    std::memcpy(into, m_memory.at(offset), length);
    std::atomic_thread_fence(std::memory_order_acquire);
    return true;
}

// A section cannot become shorter while a view of it exists.
bool BlockObject::isWhole() const {
    return isMapped();
}

// A name lives as long as any handle, ours included, so the name always leads to this object.
bool BlockObject::isAbandoned() const {
    return false;
}

void BlockObject::close() {
    m_memory = BlockMemory();
    m_handle->close();
}

struct DataValidEvent::Handle {
    HANDLE event = nullptr;

    Handle() = default;
    ~Handle() { close(); }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    void close() {
        if (event != nullptr) {
            CloseHandle(event);
        }
        event = nullptr;
    }
};

DataValidEvent::DataValidEvent() : m_handle(std::make_unique<Handle>()) {}
DataValidEvent::~DataValidEvent() = default;

irsdk_Error DataValidEvent::open() {
    m_handle->event = OpenEventW(SYNCHRONIZE, FALSE, IRSDK_DATAVALIDEVENTNAME);
    return m_handle->event != nullptr
               ? irsdk_Error::None
               : reasonOf(GetLastError(), irsdk_Error::NoEvent, irsdk_Error::ForeignEvent);
}

bool DataValidEvent::isOpen() const {
    return m_handle->event != nullptr;
}

// The event keeps a signal until a wait takes it; nothing has to be prepared.
void DataValidEvent::arm() {}

// Takes the signal of the completion that was consumed already.
void DataValidEvent::rearm() {
    WaitForSingleObject(m_handle->event, 0);
}

void DataValidEvent::wait(int timeOut) {
    WaitForSingleObject(m_handle->event, static_cast<DWORD>(timeOut));
}

bool DataValidEvent::waitOn(int /*timeOut*/) {
    return false;
}

void DataValidEvent::close() {
    m_handle->close();
}

void sleepFor(int milliseconds) {
    Sleep(static_cast<DWORD>(milliseconds));
}

std::int64_t systemSeconds() {
    return _time64(nullptr);
}

unsigned int registerBroadcastMessage() {
    return RegisterWindowMessageW(IRSDK_BROADCASTMSGNAME);
}

void sendBroadcastMessage(unsigned int message, std::int64_t wParam, std::int64_t lParam) {
    SendNotifyMessageW(HWND_BROADCAST, message, static_cast<WPARAM>(wParam),
                       static_cast<LPARAM>(lParam));
}

}  // namespace irsdk
