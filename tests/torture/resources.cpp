#include "tests/torture/resources.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <malloc.h>
#include <string>
#include <unistd.h>

namespace torture {

Resources Resources::now() {
    Resources resources;
    const std::filesystem::directory_iterator descriptors("/proc/self/fd");
    resources.descriptors = static_cast<int>(std::distance(begin(descriptors), end(descriptors)));
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        resources.namedMaps += line.find('/') != std::string::npos ? 1 : 0;
    }
    const struct mallinfo2 heap = mallinfo2();
    resources.inUse = heap.uordblks + heap.hblkhd;
    std::ifstream pages("/proc/self/statm");
    std::size_t total = 0;
    std::size_t resident = 0;
    pages >> total >> resident;
    resources.resident = resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    return resources;
}

}  // namespace torture
