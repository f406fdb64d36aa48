#pragma once

#include "irsdk/layout.h"

#include <cstdint>
#include <string>
#include <vector>

/**
 * The link to the simulator's shared-memory block and to its broadcast channel.
 *
 * When things go wrong: no function throws, prints or ends the process. Failure is false, null or
 * -1, and irsdk_lastError() tells the reason in a value. A block that claims more than its mapping
 * holds counts as a block without that part: no data, no such variable. Nothing is read outside the
 * mapping, and nothing is written past the length that a caller passes.
 *
 * The link is one per process. All calls MUST come from one thread. Pointers into the block are
 * valid until irsdk_shutdown(), but what they point at is changed by another process at any time.
 * On Linux reading through them may even fault (SIGBUS), when the simulator cuts its block off;
 * no function that copies or answers a number can. Callers that act on what they read MUST use
 * those.
 */

/** Why the link is not open, or what kept an open link from handing something out. */
enum class irsdk_Error : std::int32_t {
    None,           // nothing went wrong; a look that found nothing new counts as well
    NoBlock,        // no simulator has published a block, or something else has its name
    ForeignBlock,   // the block belongs to another user and is not trusted
    BlockTooSmall,  // the block cannot even hold its header
    BlockTooLarge,  // the block is far larger than any that a simulator publishes
    OpenFailed,     // the operating system refused to open the block or the event
    MapFailed,      // the operating system refused to map the block or the event
    NoEvent,        // a block, but no data-valid event yet
    ForeignEvent,   // the data-valid event belongs to another user and is not trusted
    BlockShrunk,    // the block was cut off while the link was open
    BlockInvalid,   // offsets, counts or lengths of the block point outside it
    OutOfMemory,    // there is not enough memory for what the block holds
    BufferTooSmall  // a snapshot is longer than the caller's buffer
};

/** A sentence fragment for log files, such as "the block belongs to another user". Never null. */
const char* irsdk_errorText(irsdk_Error error);

/**
 * The reason of the last failure. Each irsdk_startup() and each look for new data forgets the ones
 * before it: None afterwards when all went well. None also before the first call.
 */
irsdk_Error irsdk_lastError();

/**
 * Opens whatever is not open yet: the block, its view, the data-valid event. True when all are
 * open. A partly successful start keeps what it opened, and the next call goes on from there.
 */
bool irsdk_startup();

/**
 * Closes everything. The link is as one never opened, but for two things: irsdk_lastError() keeps
 * the reason, and irsdk_isConnected() of a link opened again still knows the last snapshot's age.
 */
void irsdk_shutdown();

/**
 * Copies the newest snapshot into `data` when it is newer than the last one handed out; true then.
 * Opens a closed link. `data` must have room for the header's `bufferLength` bytes; with null
 * nothing is copied and the result says whether there is a newer snapshot.
 *
 * The first call after the link was opened, and the first after the simulator was stopped or
 * counted backwards, only notes where the simulator stands: that snapshot may be of any age.
 */
bool irsdk_getNewData(char* data);

/** The same for a buffer of `dataLength` bytes: a longer snapshot is no new data. */
bool irsdk_getNewData(char* data, int dataLength);

/**
 * irsdk_getNewData() that waits up to `timeOut` milliseconds for the data-valid event when there is
 * nothing new. With the simulator absent it sleeps as long, so that a caller in a loop does not
 * spin. With a `timeOut` of 0 or below it never waits.
 */
bool irsdk_waitForDataReady(int timeOut, char* data);

/** The same for a buffer of `dataLength` bytes: a longer snapshot is no new data. */
bool irsdk_waitForDataReady(int timeOut, char* data, int dataLength);

/**
 * Bytes of the last snapshot that was copied into a caller's buffer, 0 when there was none since
 * the link was opened. The simulator may change the length of its buffers; what lies after this
 * one in the caller's buffer is left over from earlier snapshots.
 */
int irsdk_getDataLength();

/** True while the simulator says that it runs and the last snapshot is less than 30 seconds old. */
bool irsdk_isConnected();

/**
 * Copies the header, each value read once. In the copy `numVars` counts only entries that lie
 * inside the mapping and is never negative, and `bufferLength` is 0 unless it is positive and at
 * least one buffer of that length lies inside the mapping. False while the link is closed or the
 * block is gone.
 */
bool irsdk_copyHeader(irsdk_header& header);

/**
 * Copies the entries of the variable table that lie inside the mapping. `table` keeps its capacity,
 * so that repeated calls allocate nothing. False, with an empty table, while the link is closed,
 * the block is gone, or there is not enough memory.
 */
bool irsdk_copyVarHeaders(std::vector<irsdk_varHeader>& table);

/**
 * Copies the session text, which ends at its zero byte or at the end of the mapping, and its update
 * counter. A text outside the mapping is absent and copied as an empty one. A text whose counter
 * moves during the copy is copied again a few times. False, with an empty text, while the link is
 * closed, the block is gone, there is not enough memory, or it would not stand still; `update` is
 * -1 in the first two cases and the header's counter in the others.
 */
bool irsdk_copySessionInfoStr(std::string& text, int& update);

/** The header, or null while the link is closed. Reading through it may fault; see above. */
const irsdk_header* irsdk_getHeader();

/**
 * Variable buffer `index`, or null while the link is closed or when the buffer or its descriptor
 * lies outside the mapping. `index` is not compared with `numBuf`. Reading through it may fault.
 */
const char* irsdk_getData(int index);

/**
 * The session text; null while the link is closed or when it does not end inside the mapping.
 * Reading through it may fault.
 */
const char* irsdk_getSessionInfoStr();

/** The update counter of the session text, or -1 while the link is closed or the block is gone. */
int irsdk_getSessionInfoStrUpdate();

/**
 * The variable table; null while the link is closed or when it does not lie inside the mapping.
 * Nothing makes the simulator align its table: on an odd address the fields MUST be copied out as
 * bytes, which irsdk_copyVarHeaders() does. Reading through it may fault.
 */
const irsdk_varHeader* irsdk_getVarHeaderPtr();

/**
 * Entry `index` of the variable table, or null when there is none inside the mapping. It is aligned
 * no better than the table. Reading through it may fault.
 */
const irsdk_varHeader* irsdk_getVarHeaderEntry(int index);

/**
 * Index of the first variable of that name, compared over at most 32 bytes; -1 when there is none.
 */
int irsdk_varNameToIndex(const char* name);

/** Offset of that variable in a buffer; -1 when there is none. */
int irsdk_varNameToOffset(const char* name);

/** Code of a command. The codes are the simulator's own; those from 0 to 12 are sent. */
enum irsdk_BroadcastMsg : std::int32_t {};

/** First code that is not sent. */
inline constexpr std::uint32_t irsdk_BroadcastLast = 13;

/** The number of the broadcast message, the same during the life of the process; 0 if none. */
unsigned int irsdk_getBroadcastMsgID();

/**
 * Sends command `msg` with the low 16 bits of `var1` and with `var2`. Nothing tells whether a
 * simulator listened.
 */
void irsdk_broadcastMsg(irsdk_BroadcastMsg msg, int var1, int var2);

/**
 * The same with a real number, sent as 16.16 fixed point, cut off towards zero. A number outside
 * that range is sent as the nearest one in it, and one that is not a number as 0.
 */
void irsdk_broadcastMsg(irsdk_BroadcastMsg msg, int var1, float var2);

/** Sends nothing, on purpose: commands with three arguments are not available through this link. */
void irsdk_broadcastMsg(irsdk_BroadcastMsg msg, int var1, int var2, int var3);

/**
 * Encodes a car number that is shown with `zero` leading zeros: "007" is (7, 2) and becomes 3007.
 * Without leading zeros it is `num` itself.
 */
int irsdk_padCarNum(int num, int zero);
