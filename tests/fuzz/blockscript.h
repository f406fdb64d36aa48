#pragma once

#include "irsdk/layout.h"

#include <cstddef>

namespace fuzz {

// A fuzzer's input is a block, whose reserved words say what happens to it: one byte per tick. The
// byte modulo kBlockActions is the action before the tick, the quotient is the action's argument.

enum class BlockAction {
    Nothing,
    MoveSessionCounter,  // the session text counts as new
    StopAndStart,        // the status goes off for a tick
    CutOff,              // the block is shorter for a tick
    ChangeHeader,        // a word of the header becomes a hostile number
    ChangeReading,       // a word of every snapshot grows by one or becomes a hostile number
    Reconnect,           // the host disconnects, probes and connects
    JumpBack             // the tick counts start over
};

inline constexpr int kBlockActions = 8;
inline constexpr int kArguments = 32;

inline constexpr std::size_t kScriptOffset = offsetof(irsdk_header, reserved);
inline constexpr std::size_t kScriptLength = sizeof(irsdk_header::reserved);

// The offset of the session's tick in the seeds' snapshots. It grows with every tick, because an
// unchanged tick is not a new reading.
inline constexpr std::size_t kSessionTickOffset = 8;

}  // namespace fuzz
