#pragma once

namespace bench {

/**
 * Seconds of processor time that this thread has had, in user and system mode. Other programs on
 * the machine take none of it, so that what is measured stays the same beside a busy neighbour.
 * Nothing that is measured here sleeps.
 */
[[nodiscard]] double threadSeconds();

}  // namespace bench
