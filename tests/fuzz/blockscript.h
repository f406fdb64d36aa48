#pragma once

#include "irsdk/layout.h"

#include <cstddef>

namespace fuzz {

// A block that is a fuzzer's input says in its own reserved words what happens to it: one byte for
// each tick, of which the rest by kBlockActions is the action before the tick and the quotient its
// argument.

enum class BlockAction {
    Nothing,
    MoveSessionCounter,  // the session text counts as new
    StopAndStart,        // the status goes off for a tick
    CutOff,              // the block is shorter for a tick
    ChangeHeader,        // a word of the header becomes a hostile number
    ChangeReading,       // a word of every snapshot grows by one or becomes a hostile number
    Reconnect,           // the host disconnects, probes and connects
    JumpBack             // the tick counts start anew
};

inline constexpr int kBlockActions = 8;
inline constexpr int kArguments = 32;

inline constexpr std::size_t kScriptOffset = offsetof(irsdk_header, reserved);
inline constexpr std::size_t kScriptLength = sizeof(irsdk_header::reserved);

// Where the seeds have the session's tick in a snapshot; it grows with every tick, since a tick
// that stands still is no new reading.
inline constexpr std::size_t kSessionTickOffset = 8;

}  // namespace fuzz
