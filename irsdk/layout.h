#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

/**
 * The simulator's shared-memory block, byte for byte. The layout is owned by the simulator: nothing
 * here may be moved, widened or renamed for this project's convenience, and every offset is held by
 * the assertions below. All integers are little-endian, 32-bit and signed.
 *
 * Offsets named "...Offset" count bytes from the start of the block, except
 * irsdk_varHeader::offset, which counts from the start of a variable buffer. The block is written
 * by another process: a value read from it is a claim, to be copied once into a local and checked
 * against the mapped size before it is followed.
 */

/** The simulator's named objects, by the names that they have on Windows. */
inline constexpr wchar_t IRSDK_MEMMAPFILENAME[] = L"Local\\IRSDKMemMapFileName";
inline constexpr wchar_t IRSDK_DATAVALIDEVENTNAME[] = L"Local\\IRSDKDataValidEvent";
inline constexpr wchar_t IRSDK_BROADCASTMSGNAME[] = L"IRSDK_BROADCASTMSG";

/** The name of such an object on Linux: a slash and what follows the last backslash. */
template <std::size_t Size>
constexpr std::array<char, Size + 1> irsdk_linuxName(const wchar_t (&name)[Size]) {
    std::array<char, Size + 1> result{'/'};
    std::size_t length = 1;
    for (const wchar_t letter : name) {
        length = letter == L'\\' ? 1 : length;
        if (letter != L'\\') {
            result[length++] = static_cast<char>(letter);
        }
    }
    return result;
}

/** Bit of irsdk_header::status that says the simulator runs and its data are valid. */
inline constexpr std::int32_t irsdk_stConnected = 1;

/** Significant bytes of a variable name; a name of full length has no terminating zero. */
inline constexpr std::size_t IRSDK_MAX_STRING = 32;

/** Bytes of a variable description. */
inline constexpr std::size_t IRSDK_MAX_DESC = 64;

/** Type codes of a variable's elements; any other code is a variable without a value. */
enum irsdk_VarType : std::int32_t {
    irsdk_char = 0,      // signed 8-bit character
    irsdk_bool = 1,      // one byte, 0 is false and everything else true
    irsdk_int = 2,       // signed 32-bit integer
    irsdk_bitField = 3,  // 32 bits, read as a signed integer
    irsdk_float = 4,     // 32-bit IEEE float
    irsdk_double = 5,    // 64-bit IEEE double
};

/** Bytes of one element of type code `type`, or 0 for a code that is not known. */
constexpr std::size_t irsdk_varTypeSize(std::int32_t type) {
    switch (type) {
        case irsdk_char:
        case irsdk_bool:
            return 1;
        case irsdk_int:
        case irsdk_bitField:
        case irsdk_float:
            return 4;
        case irsdk_double:
            return 8;
        default:
            return 0;
    }
}

/** One variable buffer of the ring. */
struct irsdk_varBuf {
    std::int32_t tickCount;     // simulator tick of the snapshot; the largest is the newest
    std::int32_t bufferOffset;  // first byte of the buffer
    std::int32_t reserved[2];
};

/**
 * The start of the block. `numBuf` descriptors follow one another from `varBuf` on; only the first
 * is a member here, since the simulator alone decides how many there are.
 */
struct irsdk_header {
    std::int32_t version;
    std::int32_t status;             // irsdk_stConnected and bits of no meaning here
    std::int32_t tickRate;           // snapshots a second
    std::int32_t sessionInfoUpdate;  // changes whenever the session text is rewritten
    std::int32_t sessionInfoLength;  // never bounds the text: a zero byte ends it
    std::int32_t sessionInfoOffset;  // session text, 8-bit characters
    std::int32_t numVars;            // entries of the variable table
    std::int32_t varHeaderOffset;    // variable table
    std::int32_t numBuf;             // buffers of the ring
    std::int32_t bufferLength;       // bytes of one buffer
    std::int32_t reserved[2];
    irsdk_varBuf varBuf[1];
};

/** Offset of a buffer's descriptor from the start of the block. */
constexpr std::int64_t irsdk_varBufOffset(std::int64_t buffer) {
    return static_cast<std::int64_t>(offsetof(irsdk_header, varBuf)) +
           buffer * static_cast<std::int64_t>(sizeof(irsdk_varBuf));
}

/** One entry of the variable table. */
struct irsdk_varHeader {
    std::int32_t type;    // irsdk_VarType, or a code of a later simulator
    std::int32_t offset;  // first element, from the start of a variable buffer
    std::int32_t count;   // elements: 1, or one for each car
    std::int8_t countAsTime;
    std::int8_t padding[3];
    char name[IRSDK_MAX_STRING];  // zero-padded
    char desc[IRSDK_MAX_DESC];
    char unit[IRSDK_MAX_STRING];  // zero-terminated
};

static_assert(sizeof(irsdk_varBuf) == 16);
static_assert(offsetof(irsdk_varBuf, tickCount) == 0);
static_assert(offsetof(irsdk_varBuf, bufferOffset) == 4);
static_assert(offsetof(irsdk_varBuf, reserved) == 8);

static_assert(offsetof(irsdk_header, version) == 0);
static_assert(offsetof(irsdk_header, status) == 4);
static_assert(offsetof(irsdk_header, tickRate) == 8);
static_assert(offsetof(irsdk_header, sessionInfoUpdate) == 12);
static_assert(offsetof(irsdk_header, sessionInfoLength) == 16);
static_assert(offsetof(irsdk_header, sessionInfoOffset) == 20);
static_assert(offsetof(irsdk_header, numVars) == 24);
static_assert(offsetof(irsdk_header, varHeaderOffset) == 28);
static_assert(offsetof(irsdk_header, numBuf) == 32);
static_assert(offsetof(irsdk_header, bufferLength) == 36);
static_assert(offsetof(irsdk_header, reserved) == 40);
static_assert(offsetof(irsdk_header, varBuf) == 48);
static_assert(sizeof(irsdk_header) == 64);

static_assert(sizeof(irsdk_varHeader) == 144);
static_assert(offsetof(irsdk_varHeader, type) == 0);
static_assert(offsetof(irsdk_varHeader, offset) == 4);
static_assert(offsetof(irsdk_varHeader, count) == 8);
static_assert(offsetof(irsdk_varHeader, countAsTime) == 12);
static_assert(offsetof(irsdk_varHeader, padding) == 13);
static_assert(offsetof(irsdk_varHeader, name) == 16);
static_assert(offsetof(irsdk_varHeader, desc) == 48);
static_assert(offsetof(irsdk_varHeader, unit) == 112);
