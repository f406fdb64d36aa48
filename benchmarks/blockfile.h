#pragma once

#include "irsdk/layout.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace bench {

/** The simulator's block as a file, without the link. */
class BlockFile {
public:
    BlockFile()
        : m_descriptor(shm_open(irsdk_linuxName(IRSDK_MEMMAPFILENAME).data(), O_RDONLY, 0)) {}
    ~BlockFile() { close(m_descriptor); }
    BlockFile(const BlockFile&) = delete;
    BlockFile& operator=(const BlockFile&) = delete;

    void read(void* into, std::size_t length, std::int64_t offset) const {
        if (pread(m_descriptor, into, length, offset) != static_cast<ssize_t>(length)) {
            std::abort();
        }
    }

private:
    int m_descriptor;
};

}  // namespace bench
