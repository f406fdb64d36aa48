#include "benchmarks/sizecheck.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace bench {

SizeCheck::SizeCheck() : m_descriptor(shm_open("/IRSDKMemMapFileName", O_RDONLY, 0)) {}

SizeCheck::~SizeCheck() {
    if (m_descriptor >= 0) {
        close(m_descriptor);
    }
}

std::size_t SizeCheck::size() const {
    struct stat state {};
    return fstat(m_descriptor, &state) == 0 ? static_cast<std::size_t>(state.st_size) : 0;
}

}  // namespace bench
