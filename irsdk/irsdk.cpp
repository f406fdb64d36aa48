#include "irsdk/irsdk.h"

#include "irsdk/allocation.h"
#include "irsdk/blockmemory.h"
#include "irsdk/clock.h"
#include "irsdk/platform.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstring>
#include <limits>
#include <string_view>

namespace {

constexpr int kNoTickYet = std::numeric_limits<int>::max();
constexpr std::int64_t kLongestSilence = 29;  // seconds
constexpr int kSessionTextAttempts = 5;
constexpr int kNoLimit = std::numeric_limits<int>::max();

// The state of the one link of this process. The objects are never destroyed: a host that ends
// while it is connected may destroy the plugin, and with it the connection, after this library's
// statics.
irsdk::BlockObject& hMemMapFile = *new irsdk::BlockObject;
irsdk::DataValidEvent& hDataValidEvent = *new irsdk::DataValidEvent;
const irsdk_header* pHeader = nullptr;
bool isInitialized = false;
int lastTickCount = kNoTickYet;
std::int64_t lastValidTime = 0;
int lastDataLength = 0;
irsdk_Error lastError = irsdk_Error::None;

bool fail(irsdk_Error error) {
    lastError = error;
    return false;
}

const irsdk::BlockMemory& block() {
    return hMemMapFile.memory();
}

std::int32_t headerField(std::size_t offset) {
    return block().read(static_cast<std::int64_t>(offset));
}

std::int32_t status() {
    return headerField(offsetof(irsdk_header, status));
}
std::int32_t sessionInfoUpdate() {
    return headerField(offsetof(irsdk_header, sessionInfoUpdate));
}
std::int32_t sessionInfoOffset() {
    return headerField(offsetof(irsdk_header, sessionInfoOffset));
}
std::int32_t numVars() {
    return headerField(offsetof(irsdk_header, numVars));
}
std::int32_t varHeaderOffset() {
    return headerField(offsetof(irsdk_header, varHeaderOffset));
}
std::int32_t numBuf() {
    return headerField(offsetof(irsdk_header, numBuf));
}
std::int32_t bufferLength() {
    return headerField(offsetof(irsdk_header, bufferLength));
}

std::int64_t descriptorOffset(std::int64_t index) {
    return static_cast<std::int64_t>(offsetof(irsdk_header, varBuf)) +
           index * static_cast<std::int64_t>(sizeof(irsdk_varBuf));
}

std::int32_t tickCountOf(std::int64_t buffer) {
    return block().read(descriptorOffset(buffer) +
                        static_cast<std::int64_t>(offsetof(irsdk_varBuf, tickCount)));
}

std::int32_t bufferOffsetOf(std::int64_t buffer) {
    return block().read(descriptorOffset(buffer) +
                        static_cast<std::int64_t>(offsetof(irsdk_varBuf, bufferOffset)));
}

/** The first descriptor is read whatever the block says of their number. */
std::int64_t descriptorsToRead(std::int32_t stated) {
    return std::max(stated, 1);
}

bool holdsDescriptors(std::int64_t count) {
    return block().holds(descriptorOffset(0),
                         count * static_cast<std::int64_t>(sizeof(irsdk_varBuf)));
}

bool holdsAnyBuffer(std::int32_t stated, std::int32_t length) {
    const std::int64_t count = descriptorsToRead(stated);
    if (length <= 0 || !holdsDescriptors(count)) {
        return false;
    }
    for (std::int64_t i = 0; i < count; ++i) {
        if (block().holds(bufferOffsetOf(i), length)) {
            return true;
        }
    }
    return false;
}

std::int64_t varHeaderAt(std::int64_t table, std::int64_t index) {
    return table + index * static_cast<std::int64_t>(sizeof(irsdk_varHeader));
}

void closeAll() {
    hDataValidEvent.close();
    hMemMapFile.close();
    pHeader = nullptr;
    isInitialized = false;
    lastTickCount = kNoTickYet;
    lastDataLength = 0;
}

bool failStartup(irsdk_Error error) {
    isInitialized = false;
    return fail(error);
}

/** A half-opened link must not wait for the event of one simulator beside the block of another. */
void dropAbandonedBlock() {
    if (!isInitialized && hMemMapFile.isOpen() && hMemMapFile.isAbandoned()) {
        closeAll();
    }
}

enum class Look {
    NothingNew,
    NewData,        // a snapshot was handed out
    Resynchronised  // a new starting point was noted, nothing was handed out
};

struct NewestBuffer {
    std::int64_t index = 0;
    std::int32_t tickCount = 0;
};

/** The buffer with the largest count, the first of them if there are several. */
NewestBuffer findNewest(std::int64_t count) {
    NewestBuffer newest{0, tickCountOf(0)};
    for (std::int64_t i = 1; i < count; ++i) {
        const std::int32_t tickCount = tickCountOf(i);
        if (tickCount > newest.tickCount) {
            newest = {i, tickCount};
        }
    }
    return newest;
}

/**
 * Copies a buffer, offset and length being read afresh for each copy; with null `data` only tells
 * whether there is such a buffer.
 */
bool copyBuffer(std::int64_t index, char* data, int room) {
    const std::int32_t length = bufferLength();
    const std::int32_t offset = bufferOffsetOf(index);
    if (length <= 0 || !block().holds(offset, length)) {
        return fail(irsdk_Error::BlockInvalid);
    }
    if (data == nullptr) {
        return true;
    }
    if (length > room) {
        return fail(irsdk_Error::BufferTooSmall);
    }
    std::memcpy(data, block().at(offset), static_cast<std::size_t>(length));
    lastDataLength = length;
    return true;
}

/**
 * The count of a buffer after its payload was copied. The fence keeps the reads of the payload from
 * being moved behind this read, by the compiler as by the processor, and the atomic read behind it
 * cannot be merged with the one before the copy: it fetches what the simulator has written
 * meanwhile.
 */
std::int32_t tickCountAfterCopy(std::int64_t buffer) {
    std::atomic_thread_fence(std::memory_order_acquire);
    return tickCountOf(buffer);
}

/**
 * Copies a snapshot whole, at the second attempt if the simulator wrote into the first. The count
 * of the good copy is left in `newest`. A count that fell during the copy is the mark of a buffer
 * that is being overwritten; it stands still for as long as that takes and therefore proves
 * nothing.
 */
bool copyUntorn(NewestBuffer& newest, char* data, int room) {
    if (!copyBuffer(newest.index, data, room)) {
        return false;
    }
    if (data == nullptr) {
        return true;
    }
    const std::int32_t afterFirst = tickCountAfterCopy(newest.index);
    if (afterFirst == newest.tickCount) {
        return true;
    }
    if (afterFirst < newest.tickCount || !copyBuffer(newest.index, data, room) ||
        tickCountAfterCopy(newest.index) != afterFirst) {
        return false;
    }
    newest.tickCount = afterFirst;
    return true;
}

Look noteStart(std::int32_t tickCount) {
    lastTickCount = tickCount;
    return Look::Resynchronised;
}

Look handOut(std::int32_t tickCount) {
    lastTickCount = tickCount;
    lastValidTime = irsdk::calendarSeconds();
    return Look::NewData;
}

Look nothing(irsdk_Error error) {
    fail(error);
    return Look::NothingNew;
}

Look blockShrunk() {
    lastTickCount = kNoTickYet;
    return nothing(irsdk_Error::BlockShrunk);
}

/** Looks at the ring of an open link and takes its newest snapshot if it is a new one. */
Look takeNewest(char* data, int room) {
    lastError = irsdk_Error::None;
    if (!hMemMapFile.isWhole()) {
        return blockShrunk();
    }
    if ((status() & irsdk_stConnected) == 0) {
        lastTickCount = kNoTickYet;
        return Look::NothingNew;
    }
    const std::int64_t count = descriptorsToRead(numBuf());
    if (!holdsDescriptors(count)) {
        return nothing(irsdk_Error::BlockInvalid);
    }
    NewestBuffer newest = findNewest(count);
    if (lastTickCount == newest.tickCount) {
        return Look::NothingNew;
    }
    if (lastTickCount > newest.tickCount) {
        return noteStart(newest.tickCount);
    }
    const bool copied = copyUntorn(newest, data, room);
    // What was cut off meanwhile was copied as zeros.
    if (!hMemMapFile.isIntact()) {
        return blockShrunk();
    }
    return copied ? handOut(newest.tickCount) : Look::NothingNew;
}

bool ensureOpen() {
    return isInitialized || irsdk_startup();
}

class TimeLeft {
public:
    explicit TimeLeft(int milliseconds) : m_end(Clock::now() + Milliseconds(milliseconds)) {}

    [[nodiscard]] int milliseconds() const {
        const auto left = std::chrono::ceil<Milliseconds>(m_end - Clock::now());
        return static_cast<int>(std::max(left, Milliseconds(0)).count());
    }

private:
    using Clock = std::chrono::steady_clock;
    using Milliseconds = std::chrono::milliseconds;
    Clock::time_point m_end;
};

bool takesNewData(char* data, int room) {
    return takeNewest(data, room) == Look::NewData;
}

/** A wait that follows a look which consumed a completion without handing anything out. */
bool waitAfterResync(int timeOut, char* data, int room) {
    const TimeLeft left(timeOut);
    hDataValidEvent.rearm();
    if (takesNewData(data, room)) {
        return true;
    }
    hDataValidEvent.wait(timeOut);
    if (takesNewData(data, room)) {
        return true;
    }
    const int rest = left.milliseconds();
    return rest > 0 && hDataValidEvent.waitOn(rest) && takesNewData(data, room);
}

bool newDataWithin(int timeOut, char* data, int room) {
    hDataValidEvent.arm();
    const Look look = takeNewest(data, room);
    if (look == Look::NewData) {
        return true;
    }
    if (timeOut <= 0) {
        return takesNewData(data, room);
    }
    if (look == Look::Resynchronised) {
        return waitAfterResync(timeOut, data, room);
    }
    hDataValidEvent.wait(timeOut);
    return takesNewData(data, room);
}

/** The text up to its zero byte or the end of the block. One that lies outside is absent: empty. */
std::string_view textAt(std::int32_t offset) {
    return block().holds(offset, 1)
               ? std::string_view(block().at(offset), block().textLength(offset))
               : std::string_view();
}

/**
 * Whether a copied text is what the block still holds. The counter alone does not tell: a simulator
 * that changes it behind the text leaves it alone while it writes. Only one that stops in the
 * middle of its writing passes with half a text; its counter moves when it goes on, and the text is
 * read anew.
 */
bool stoodStill(const std::string& copy, std::int32_t offset, std::int32_t update) {
    std::atomic_thread_fence(std::memory_order_acquire);
    const bool isSame =
        copy.empty() || std::memcmp(copy.data(), block().at(offset), copy.size()) == 0;
    return isSame && sessionInfoUpdate() == update;
}

void broadcast(irsdk_BroadcastMsg msg, int var1, std::int32_t var2) {
    static const unsigned int msgId = irsdk_getBroadcastMsgID();
    const auto code = static_cast<std::uint32_t>(msg);
    if (msgId == 0 || code >= irsdk_BroadcastLast) {
        return;
    }
    const auto wParam = static_cast<std::int32_t>((static_cast<std::uint32_t>(var1) << 16) | code);
    irsdk::sendBroadcastMessage(msgId, wParam, var2);
}

std::int32_t fixedPoint(float value) {
    constexpr double kOne = 65536.0;  // 1.0 in 16.16 fixed point
    constexpr double kLargest = std::numeric_limits<std::int32_t>::max();
    constexpr double kSmallest = std::numeric_limits<std::int32_t>::min();
    const double scaled = static_cast<double>(value) * kOne;
    if (scaled != scaled) {
        return 0;
    }
    return static_cast<std::int32_t>(std::clamp(scaled, kSmallest, kLargest));
}

}  // namespace

const char* irsdk_errorText(irsdk_Error error) {
    switch (error) {
        case irsdk_Error::None:
            return "no error";
        case irsdk_Error::NoBlock:
            return "no simulator has published a block";
        case irsdk_Error::ForeignBlock:
            return "the block belongs to another user";
        case irsdk_Error::BlockTooSmall:
            return "the block is too small to hold its header";
        case irsdk_Error::BlockTooLarge:
            return "the block is larger than any simulator's";
        case irsdk_Error::OpenFailed:
            return "the system does not open the block or the data-valid event";
        case irsdk_Error::MapFailed:
            return "the system does not map the block or the data-valid event";
        case irsdk_Error::NoEvent:
            return "there is a block but no data-valid event";
        case irsdk_Error::ForeignEvent:
            return "the data-valid event belongs to another user";
        case irsdk_Error::BlockShrunk:
            return "the block was cut off while it was open";
        case irsdk_Error::BlockInvalid:
            return "the block points outside itself";
        case irsdk_Error::OutOfMemory:
            return "there is not enough memory for what the simulator publishes";
        case irsdk_Error::BufferTooSmall:
            return "a snapshot is longer than the buffer for it";
    }
    return "unknown error";
}

irsdk_Error irsdk_lastError() {
    return lastError;
}

bool irsdk_startup() {
    dropAbandonedBlock();
    if (!hMemMapFile.isOpen()) {
        const irsdk_Error error = hMemMapFile.open();
        lastTickCount = kNoTickYet;
        if (error != irsdk_Error::None) {
            return failStartup(error);
        }
    }
    if (!hMemMapFile.isMapped()) {
        const irsdk_Error error = hMemMapFile.map();
        lastTickCount = kNoTickYet;
        if (error != irsdk_Error::None) {
            return failStartup(error);
        }
        pHeader = reinterpret_cast<const irsdk_header*>(block().at(0));
    }
    if (!hDataValidEvent.isOpen()) {
        const irsdk_Error error = hDataValidEvent.open();
        lastTickCount = kNoTickYet;
        if (error != irsdk_Error::None) {
            return failStartup(error);
        }
    }
    isInitialized = true;
    lastError = irsdk_Error::None;
    return true;
}

void irsdk_shutdown() {
    closeAll();
}

bool irsdk_getNewData(char* data) {
    return irsdk_getNewData(data, kNoLimit);
}

bool irsdk_getNewData(char* data, int dataLength) {
    return ensureOpen() && takesNewData(data, dataLength);
}

bool irsdk_waitForDataReady(int timeOut, char* data) {
    return irsdk_waitForDataReady(timeOut, data, kNoLimit);
}

bool irsdk_waitForDataReady(int timeOut, char* data, int dataLength) {
    if (ensureOpen()) {
        return newDataWithin(timeOut, data, dataLength);
    }
    if (timeOut >= 1) {
        irsdk::sleepFor(timeOut);
    }
    return false;
}

int irsdk_getDataLength() {
    return lastDataLength;
}

bool irsdk_isConnected() {
    if (!isInitialized || !hMemMapFile.isWhole()) {
        return false;
    }
    return irsdk::calendarSeconds() - lastValidTime <= kLongestSilence &&
           (status() & irsdk_stConnected) != 0;
}

bool irsdk_copyHeader(irsdk_header& header) {
    if (!isInitialized) {
        return false;
    }
    if (!hMemMapFile.isWhole()) {
        return fail(irsdk_Error::BlockShrunk);
    }
    constexpr std::size_t kFieldSize = sizeof(std::int32_t);
    std::array<std::int32_t, sizeof(irsdk_header) / kFieldSize> fields{};
    for (std::size_t i = 0; i < fields.size(); ++i) {
        fields[i] = headerField(i * kFieldSize);
    }
    std::memcpy(&header, fields.data(), sizeof header);
    header.numVars = static_cast<std::int32_t>(
        block().entriesHeld(header.varHeaderOffset, header.numVars, sizeof(irsdk_varHeader)));
    if (!holdsAnyBuffer(header.numBuf, header.bufferLength)) {
        header.bufferLength = 0;
        lastError = irsdk_Error::BlockInvalid;
    }
    return true;
}

bool irsdk_copyVarHeaders(std::vector<irsdk_varHeader>& table) {
    table.clear();
    if (!isInitialized) {
        return false;
    }
    if (!hMemMapFile.isWhole()) {
        return fail(irsdk_Error::BlockShrunk);
    }
    const std::int32_t offset = varHeaderOffset();
    const std::int64_t count = block().entriesHeld(offset, numVars(), sizeof(irsdk_varHeader));
    if (!irsdk::hasMemoryTo([&] { table.resize(static_cast<std::size_t>(count)); })) {
        return fail(irsdk_Error::OutOfMemory);
    }
    if (count > 0) {
        std::memcpy(table.data(), block().at(offset), table.size() * sizeof(irsdk_varHeader));
    }
    // What was cut off meanwhile was copied as zeros.
    if (!hMemMapFile.isWhole()) {
        table.clear();
        return fail(irsdk_Error::BlockShrunk);
    }
    return true;
}

bool irsdk_copySessionInfoStr(std::string& text, int& update) {
    text.clear();
    update = -1;
    if (!isInitialized) {
        return false;
    }
    if (!hMemMapFile.isWhole()) {
        return fail(irsdk_Error::BlockShrunk);
    }
    for (int attempt = 0; attempt < kSessionTextAttempts; ++attempt) {
        update = sessionInfoUpdate();
        const std::int32_t offset = sessionInfoOffset();
        if (!irsdk::hasMemoryTo([&] { text.assign(textAt(offset)); })) {
            text.clear();
            return fail(irsdk_Error::OutOfMemory);
        }
        const bool stood = stoodStill(text, offset, update);
        // What was cut off meanwhile was copied, or compared, as zeros.
        if (!hMemMapFile.isWhole()) {
            text.clear();
            update = -1;
            return fail(irsdk_Error::BlockShrunk);
        }
        if (stood) {
            // The text may have become shorter between the search for its end and the copy.
            text.resize(std::min(text.find('\0'), text.size()));
            return true;
        }
    }
    text.clear();
    return false;
}

const irsdk_header* irsdk_getHeader() {
    return isInitialized ? pHeader : nullptr;
}

const char* irsdk_getData(int index) {
    if (!isInitialized || index < 0 || !holdsDescriptors(std::int64_t{index} + 1)) {
        return nullptr;
    }
    const std::int32_t offset = bufferOffsetOf(index);
    const std::int32_t length = bufferLength();
    return length > 0 && block().holds(offset, length) ? block().at(offset) : nullptr;
}

const char* irsdk_getSessionInfoStr() {
    if (!isInitialized) {
        return nullptr;
    }
    const std::int32_t offset = sessionInfoOffset();
    if (!block().holds(offset, 1)) {
        return nullptr;
    }
    const std::int64_t end = offset + static_cast<std::int64_t>(block().textLength(offset));
    return block().holds(end, 1) ? block().at(offset) : nullptr;
}

int irsdk_getSessionInfoStrUpdate() {
    return isInitialized ? sessionInfoUpdate() : -1;
}

const irsdk_varHeader* irsdk_getVarHeaderPtr() {
    if (!isInitialized) {
        return nullptr;
    }
    const std::int32_t offset = varHeaderOffset();
    const std::int64_t count = std::max(numVars(), 0);
    return block().holds(offset, varHeaderAt(0, count))
               ? reinterpret_cast<const irsdk_varHeader*>(block().at(offset))
               : nullptr;
}

const irsdk_varHeader* irsdk_getVarHeaderEntry(int index) {
    if (!isInitialized || index < 0 || index >= numVars()) {
        return nullptr;
    }
    const std::int64_t entry = varHeaderAt(varHeaderOffset(), index);
    return block().holds(entry, sizeof(irsdk_varHeader))
               ? reinterpret_cast<const irsdk_varHeader*>(block().at(entry))
               : nullptr;
}

int irsdk_varNameToIndex(const char* name) {
    if (name == nullptr || !isInitialized) {
        return -1;
    }
    const std::int32_t table = varHeaderOffset();
    const std::int64_t count = block().entriesHeld(table, numVars(), sizeof(irsdk_varHeader));
    for (std::int64_t i = 0; i < count; ++i) {
        const char* entry = block().at(varHeaderAt(table, i));
        if (std::strncmp(name, entry + offsetof(irsdk_varHeader, name), IRSDK_MAX_STRING) == 0) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

int irsdk_varNameToOffset(const char* name) {
    const auto* entry =
        reinterpret_cast<const char*>(irsdk_getVarHeaderEntry(irsdk_varNameToIndex(name)));
    if (entry == nullptr) {
        return -1;
    }
    std::int32_t offset = 0;  // copied as bytes: nothing makes the simulator align its table
    std::memcpy(&offset, entry + offsetof(irsdk_varHeader, offset), sizeof offset);
    return offset;
}

unsigned int irsdk_getBroadcastMsgID() {
    static const unsigned int msgId = irsdk::registerBroadcastMessage();
    return msgId;
}

void irsdk_broadcastMsg(irsdk_BroadcastMsg msg, int var1, int var2) {
    broadcast(msg, var1, var2);
}

void irsdk_broadcastMsg(irsdk_BroadcastMsg msg, int var1, float var2) {
    broadcast(msg, var1, fixedPoint(var2));
}

void irsdk_broadcastMsg(irsdk_BroadcastMsg /*msg*/, int /*var1*/, int /*var2*/, int /*var3*/) {}

int irsdk_padCarNum(int num, int zero) {
    // The digits in all stand in front of a number of three digits.
    constexpr int kZerosDigit = 1000;
    if (zero == 0) {
        return num;
    }
    const int digits = num >= 100 ? 3 : num >= 10 ? 2 : 1;
    // In 64 bits, because any two numbers may be asked for; what no int can hold wraps around.
    const std::int64_t encoded = num + (digits + std::int64_t{zero}) * kZerosDigit;
    return static_cast<int>(encoded);
}
