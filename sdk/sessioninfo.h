#pragma once

#include <QMetaType>

namespace TLM::SDK {

/** The record of a session announcement. It is empty: the facts of a session travel in lap values.
 */
class SessionInfo {};

}  // namespace TLM::SDK
