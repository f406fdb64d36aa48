#pragma once

#include <sys/mman.h>

namespace torture {

// The simulator's objects, as Linux knows them.
constexpr const char* kBlockName = "/IRSDKMemMapFileName";
constexpr const char* kEventName = "/IRSDKDataValidEvent";

/** Takes the objects' names away; who has them open keeps them. */
inline void removeNames() {
    shm_unlink(kBlockName);
    shm_unlink(kEventName);
}

}  // namespace torture
