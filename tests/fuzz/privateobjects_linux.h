#pragma once

namespace fuzz {

/**
 * Gives this process a shared memory of its own, so that several may publish a simulator's objects
 * at the same time and a real one is not disturbed. False where the system does not allow that.
 * MUST be called before the process starts a thread.
 */
[[nodiscard]] bool takePrivateObjects();

}  // namespace fuzz
