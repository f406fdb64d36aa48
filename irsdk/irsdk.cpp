#include "irsdk/irsdk.h"

#include "irsdk/allocation.h"
#include "irsdk/blockmemory.h"
#include "irsdk/clock.h"
#include "irsdk/platform.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <cstring>
#include <limits>
#include <span>

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

std::int64_t varHeaderOffset(std::int64_t table, std::int64_t index) {
    return table + index * static_cast<std::int64_t>(sizeof(irsdk_varHeader));
}

/** Copies bytes that lie inside the block; false when it was cut off before them. */
bool copyOut(std::int64_t offset, std::size_t length, void* into) {
    return hMemMapFile.read(offset, length, into) || fail(irsdk_Error::BlockShrunk);
}

bool copyField(std::size_t offset, std::int32_t& field) {
    return copyOut(static_cast<std::int64_t>(offset), sizeof field, &field);
}

/** Copies the header of an open link as the simulator states it, each value read once. */
bool copyStatedHeader(irsdk_header& header) {
    return isInitialized && copyOut(0, sizeof header, &header);
}

std::int64_t varHeadersInside(const irsdk_header& header) {
    return block().entriesHeld(header.varHeaderOffset, header.numVars, sizeof(irsdk_varHeader));
}

/** Calls `take` with one piece of the block after the other until it answers false. */
template <typename Take>
bool copyInPieces(std::int64_t offset, std::int64_t length, Take take) {
    constexpr std::int64_t kPiece = 4096;
    std::array<char, kPiece> piece;
    for (std::int64_t done = 0; done < length; done += kPiece) {
        const auto size = static_cast<std::size_t>(std::min(kPiece, length - done));
        if (!copyOut(offset + done, size, piece.data())) {
            return false;
        }
        if (!take(std::span<const char>(piece.data(), size))) {
            return true;
        }
    }
    return true;
}

/** The start of the block: the header, and all descriptors of a ring of usual size. */
struct BlockStart {
    static constexpr std::int64_t kDescriptors = 8;

    irsdk_header header;
    std::array<irsdk_varBuf, kDescriptors - 1> further;

    [[nodiscard]] const irsdk_varBuf& descriptor(std::int64_t index) const {
        return index == 0 ? header.varBuf[0] : further[static_cast<std::size_t>(index - 1)];
    }
};

static_assert(offsetof(BlockStart, further) == sizeof(irsdk_header));

/** Copies the start of the block in one go, so that each of its values is read once. */
bool copyStart(BlockStart& start) {
    const auto size = static_cast<std::size_t>(block().size());
    return copyOut(0, std::min(sizeof start, size), &start);
}

/** The first descriptor is read whatever the block says of their number. */
std::int64_t descriptorsToRead(const irsdk_header& header) {
    return std::max(header.numBuf, 1);
}

bool holdsDescriptors(std::int64_t count) {
    return block().holds(irsdk_varBufOffset(0),
                         count * static_cast<std::int64_t>(sizeof(irsdk_varBuf)));
}

/**
 * Calls `visit` with the index and the descriptor of each of the first `count` buffers, for as long
 * as it answers true. True when all were visited.
 */
template <typename Visit>
bool visitDescriptors(const BlockStart& start, std::int64_t count, Visit visit) {
    const std::int64_t atHand = std::min(count, BlockStart::kDescriptors);
    for (std::int64_t i = 0; i < atHand; ++i) {
        if (!visit(i, start.descriptor(i))) {
            return false;
        }
    }
    const std::int64_t offset = irsdk_varBufOffset(atHand);
    return copyInPieces(offset, irsdk_varBufOffset(count) - offset,
                        [&visit, index = atHand](std::span<const char> piece) mutable {
                            irsdk_varBuf descriptor{};
                            for (; !piece.empty(); piece = piece.subspan(sizeof descriptor)) {
                                std::memcpy(&descriptor, piece.data(), sizeof descriptor);
                                if (!visit(index++, descriptor)) {
                                    return false;
                                }
                            }
                            return true;
                        });
}

bool holdsAnyBuffer(const BlockStart& start) {
    const std::int64_t count = descriptorsToRead(start.header);
    const std::int32_t length = start.header.bufferLength;
    if (length <= 0 || !holdsDescriptors(count)) {
        return false;
    }
    bool isHeld = false;
    static_cast<void>(
        visitDescriptors(start, count, [&](std::int64_t /*index*/, const irsdk_varBuf& descriptor) {
            isHeld = block().holds(descriptor.bufferOffset, length);
            return !isHeld;
        }));
    return isHeld;
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
    std::int32_t offset = 0;
    std::int32_t length = 0;

    bool operator==(const NewestBuffer&) const = default;
};

/** The buffer with the largest count, the first of them if there are several. */
bool findNewest(const BlockStart& start, std::int64_t count, NewestBuffer& newest) {
    const irsdk_varBuf& first = start.descriptor(0);
    newest = {0, first.tickCount, first.bufferOffset, start.header.bufferLength};
    return visitDescriptors(start, count, [&](std::int64_t index, const irsdk_varBuf& descriptor) {
        if (descriptor.tickCount > newest.tickCount) {
            newest.index = index;
            newest.tickCount = descriptor.tickCount;
            newest.offset = descriptor.bufferOffset;
        }
        return true;
    });
}

/** Copies a buffer; with null `data` only tells whether there is such a buffer. */
bool copyBuffer(const NewestBuffer& buffer, char* data, int room) {
    if (buffer.length <= 0 || !block().holds(buffer.offset, buffer.length)) {
        return fail(irsdk_Error::BlockInvalid);
    }
    if (data == nullptr) {
        return true;
    }
    if (buffer.length > room) {
        return fail(irsdk_Error::BufferTooSmall);
    }
    if (!copyOut(buffer.offset, static_cast<std::size_t>(buffer.length), data)) {
        return false;
    }
    lastDataLength = buffer.length;
    return true;
}

/** What the block says of a buffer by now. */
bool lookAgain(NewestBuffer& buffer) {
    BlockStart start{};
    irsdk_varBuf descriptor{};
    if (!copyStart(start)) {
        return false;
    }
    if (buffer.index < BlockStart::kDescriptors) {
        descriptor = start.descriptor(buffer.index);
    } else if (!copyOut(irsdk_varBufOffset(buffer.index), sizeof descriptor, &descriptor)) {
        return false;
    }
    buffer.tickCount = descriptor.tickCount;
    buffer.offset = descriptor.bufferOffset;
    buffer.length = start.header.bufferLength;
    return true;
}

/**
 * Copies a snapshot whole. The first copy counts when the block says the same of the buffer after
 * it: offset and length were read in one call with the count, and may be older. Else there is a
 * second one, by what the block says then, whose count is left in `newest`. A count that fell
 * during the copy is the mark of a buffer that is being overwritten; it stands still for as long as
 * that takes and therefore proves nothing.
 */
bool copyUntorn(NewestBuffer& newest, char* data, int room) {
    if (!copyBuffer(newest, data, room)) {
        return false;
    }
    if (data == nullptr) {
        return true;
    }
    const NewestBuffer first = newest;
    if (!lookAgain(newest)) {
        return false;
    }
    if (newest == first) {
        return true;
    }
    const NewestBuffer second = newest;
    return second.tickCount >= first.tickCount && copyBuffer(newest, data, room) &&
           lookAgain(newest) && newest.tickCount == second.tickCount;
}

/** Looks at the ring and copies its newest snapshot if it is a new one. */
Look lookAtRing(NewestBuffer& newest, char* data, int room) {
    BlockStart start{};
    if (!copyStart(start)) {
        return Look::NothingNew;
    }
    if ((start.header.status & irsdk_stConnected) == 0) {
        lastTickCount = kNoTickYet;
        return Look::NothingNew;
    }
    const std::int64_t count = descriptorsToRead(start.header);
    if (!holdsDescriptors(count)) {
        fail(irsdk_Error::BlockInvalid);
        return Look::NothingNew;
    }
    if (!findNewest(start, count, newest) || lastTickCount == newest.tickCount) {
        return Look::NothingNew;
    }
    if (lastTickCount > newest.tickCount) {
        return Look::Resynchronised;
    }
    return copyUntorn(newest, data, room) ? Look::NewData : Look::NothingNew;
}

/** A look whose result counts: the block still is whole, and the state moves on with it. */
Look takeNewest(char* data, int room) {
    lastError = irsdk_Error::None;
    NewestBuffer newest;
    const Look look = lookAtRing(newest, data, room);
    // Asked after the reads: what was cut off during one may have been copied as zeros.
    if (!hMemMapFile.isWhole()) {
        lastTickCount = kNoTickYet;
        fail(irsdk_Error::BlockShrunk);
        return Look::NothingNew;
    }
    if (look != Look::NothingNew) {
        lastTickCount = newest.tickCount;
    }
    if (look == Look::NewData) {
        lastValidTime = irsdk::calendarSeconds();
    }
    return look;
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

/**
 * Calls `take` with one piece after the other of the text that goes from `offset` up to its zero
 * byte or the end of the block. One that lies outside is absent: no pieces.
 */
template <typename Take>
bool copyTextInPieces(std::int64_t offset, Take take) {
    return !block().holds(offset, 1) ||
           copyInPieces(offset, block().size() - offset, [&](std::span<const char> piece) {
               const void* end = std::memchr(piece.data(), '\0', piece.size());
               take(end == nullptr ? piece
                                   : std::span(piece.data(), static_cast<const char*>(end)));
               return end == nullptr;
           });
}

/**
 * Whether a copied text is what the block still holds. The counter alone does not tell: a simulator
 * that changes it after the text leaves it alone while it writes. Only one that stops in the
 * middle of its writing passes with half a text; its counter moves when it goes on, and the text is
 * read anew.
 */
bool stoodStill(const std::string& copy, std::int32_t offset, std::int32_t update) {
    std::span<const char> rest(copy);
    irsdk_header now{};
    return copyInPieces(offset, static_cast<std::int64_t>(copy.size()),
                        [&](std::span<const char> piece) {
                            const bool isSame =
                                std::memcmp(piece.data(), rest.data(), piece.size()) == 0;
                            rest = rest.subspan(isSame ? piece.size() : 0);
                            return isSame;
                        }) &&
           rest.empty() && copyOut(0, sizeof now, &now) && now.sessionInfoUpdate == update &&
           now.sessionInfoOffset == offset;
}

/** One attempt to copy the session text; false when it failed, for the reason that was noted. */
bool copyText(std::string& text, std::int32_t& offset, int& update) {
    irsdk_header header{};
    if (!copyStatedHeader(header)) {
        return false;
    }
    text.clear();
    offset = header.sessionInfoOffset;
    update = header.sessionInfoUpdate;
    bool copied = false;
    const auto append = [&](std::span<const char> piece) {
        text.append(piece.data(), piece.size());
    };
    if (!irsdk::tryAllocate([&] { copied = copyTextInPieces(offset, append); })) {
        return fail(irsdk_Error::OutOfMemory);
    }
    return copied;
}

struct Variable {
    int index = -1;
    int offset = -1;
};

/** The first variable of that name. */
Variable findVariable(const char* name) {
    irsdk_header header{};
    if (name == nullptr || !copyStatedHeader(header)) {
        return {};
    }
    const std::int64_t count = varHeadersInside(header);
    irsdk_varHeader entry{};
    for (int i = 0; i < count; ++i) {
        if (!copyOut(varHeaderOffset(header.varHeaderOffset, i), sizeof entry, &entry)) {
            return {};
        }
        if (std::strncmp(name, entry.name, IRSDK_MAX_STRING) == 0) {
            return {i, entry.offset};
        }
    }
    return {};
}

void broadcast(irsdk_BroadcastMsg msg, int var1, std::int32_t var2) {
    static const unsigned int kMsgId = irsdk_getBroadcastMsgID();
    const auto code = static_cast<std::uint32_t>(msg);
    if (kMsgId == 0 || code >= irsdk_BroadcastLast) {
        return;
    }
    const auto wParam = static_cast<std::int32_t>((static_cast<std::uint32_t>(var1) << 16) | code);
    irsdk::sendBroadcastMessage(kMsgId, wParam, var2);
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
    std::int32_t status = 0;
    return isInitialized && irsdk::calendarSeconds() - lastValidTime <= kLongestSilence &&
           hMemMapFile.read(offsetof(irsdk_header, status), sizeof status, &status) &&
           (status & irsdk_stConnected) != 0 && hMemMapFile.isWhole();
}

bool irsdk_copyHeader(irsdk_header& header) {
    BlockStart start{};
    if (!isInitialized || !copyStart(start)) {
        return false;
    }
    const bool hasBuffer = holdsAnyBuffer(start);
    if (!hMemMapFile.isWhole()) {
        return fail(irsdk_Error::BlockShrunk);
    }
    header = start.header;
    header.numVars = static_cast<std::int32_t>(varHeadersInside(header));
    if (!hasBuffer) {
        header.bufferLength = 0;
        lastError = irsdk_Error::BlockInvalid;
    }
    return true;
}

bool irsdk_copyVarHeaders(std::vector<irsdk_varHeader>& table) {
    table.clear();
    irsdk_header header{};
    if (!copyStatedHeader(header)) {
        return false;
    }
    const std::int64_t count = varHeadersInside(header);
    if (!irsdk::tryAllocate([&] { table.resize(static_cast<std::size_t>(count)); })) {
        return fail(irsdk_Error::OutOfMemory);
    }
    const std::size_t bytes = table.size() * sizeof(irsdk_varHeader);
    if ((count > 0 && !copyOut(header.varHeaderOffset, bytes, table.data())) ||
        !hMemMapFile.isWhole()) {
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
    for (int attempt = 0; attempt < kSessionTextAttempts; ++attempt) {
        std::int32_t offset = 0;
        const bool copied = copyText(text, offset, update);
        const bool stood = copied && stoodStill(text, offset, update);
        if (!hMemMapFile.isWhole()) {
            text.clear();
            update = -1;
            return fail(irsdk_Error::BlockShrunk);
        }
        if (stood) {
            return true;
        }
        if (!copied) {
            break;
        }
    }
    text.clear();
    return false;
}

const irsdk_header* irsdk_getHeader() {
    return isInitialized ? pHeader : nullptr;
}

const char* irsdk_getData(int index) {
    NewestBuffer buffer;
    buffer.index = index;
    const bool isInside = isInitialized && index >= 0 &&
                          holdsDescriptors(std::int64_t{index} + 1) && lookAgain(buffer) &&
                          buffer.length > 0 && block().holds(buffer.offset, buffer.length);
    return isInside ? block().at(buffer.offset) : nullptr;
}

const char* irsdk_getSessionInfoStr() {
    std::int32_t offset = 0;
    std::int64_t length = 0;
    const auto count = [&](std::span<const char> piece) { length += std::ssize(piece); };
    const bool isInside = isInitialized &&
                          copyField(offsetof(irsdk_header, sessionInfoOffset), offset) &&
                          copyTextInPieces(offset, count) && block().holds(offset, length + 1);
    return isInside ? block().at(offset) : nullptr;
}

int irsdk_getSessionInfoStrUpdate() {
    std::int32_t update = -1;
    return isInitialized && copyField(offsetof(irsdk_header, sessionInfoUpdate), update) ? update
                                                                                         : -1;
}

const irsdk_varHeader* irsdk_getVarHeaderPtr() {
    irsdk_header header{};
    if (!copyStatedHeader(header)) {
        return nullptr;
    }
    const std::int64_t count = std::max(header.numVars, 0);
    return block().holds(header.varHeaderOffset, varHeaderOffset(0, count))
               ? reinterpret_cast<const irsdk_varHeader*>(block().at(header.varHeaderOffset))
               : nullptr;
}

const irsdk_varHeader* irsdk_getVarHeaderEntry(int index) {
    irsdk_header header{};
    if (index < 0 || !copyStatedHeader(header) || index >= header.numVars) {
        return nullptr;
    }
    const std::int64_t entry = varHeaderOffset(header.varHeaderOffset, index);
    return block().holds(entry, sizeof(irsdk_varHeader))
               ? reinterpret_cast<const irsdk_varHeader*>(block().at(entry))
               : nullptr;
}

int irsdk_varNameToIndex(const char* name) {
    return findVariable(name).index;
}

int irsdk_varNameToOffset(const char* name) {
    return findVariable(name).offset;
}

unsigned int irsdk_getBroadcastMsgID() {
    static const unsigned int kMsgId = irsdk::registerBroadcastMessage();
    return kMsgId;
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
