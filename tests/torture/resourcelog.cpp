#include "tests/torture/resourcelog.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <malloc.h>
#include <unistd.h>

namespace torture {

namespace {

constexpr std::size_t kMemoryLimit = std::size_t{2} * 1024 * 1024;

std::string megabytes(std::size_t first, std::size_t last, int decimals) {
    constexpr double kMegabyte = 1024.0 * 1024.0;
    return number(static_cast<double>(first) / kMegabyte, decimals) + ", " +
           number(static_cast<double>(last) / kMegabyte, decimals, "MiB");
}

}  // namespace

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

void addMemoryInUse(Table& table, const std::string& name, const Resources& first,
                    const Resources& last) {
    if (Resources::knowsMemoryInUse) {
        table.add(name, megabytes(first.inUse, last.inUse, 2), "at most 2 MiB more",
                  last.inUse <= first.inUse + kMemoryLimit);
    } else {
        table.add(name, "not known under the address sanitizer");
    }
}

void addResidentMemory(Table& table, const std::string& name, const Resources& first,
                       const Resources& last) {
    table.add(name, megabytes(first.resident, last.resident, 1));
}

void addEqualCounts(Table& table, const std::string& name, int first, int last) {
    table.add(name, std::to_string(first) + ", " + std::to_string(last), "the same", first == last);
}

void ResourceLog::measure() {
    m_entries.push_back({Clock::now(), Resources::now()});
}

/** In a run that is too short for that, the first measurement. */
const Resources& ResourceLog::afterWarmUp() const {
    const auto found = std::find_if(m_entries.begin(), m_entries.end(), [this](const Entry& entry) {
        return entry.at - m_start > m_warmUp;
    });
    const bool hasSuccessor = found != m_entries.end() && std::next(found) != m_entries.end();
    return hasSuccessor ? found->used : m_entries.front().used;
}

void ResourceLog::addTo(Table& table) const {
    const bool isComparison = m_entries.size() > 1;
    table.add("measurements of what the host holds", number(static_cast<double>(m_entries.size())),
              "at least 2", isComparison);
    if (!isComparison) {
        return;
    }
    const Resources& first = m_entries.front().used;
    const Resources& last = m_entries.back().used;
    addEqualCounts(table, "open files at the first connection and at the end", first.descriptors,
                   last.descriptors);
    addEqualCounts(table, "named mappings at the first connection and at the end", first.namedMaps,
                   last.namedMaps);
    addMemoryInUse(table, "memory in use after the first minute and at the end", afterWarmUp(),
                   last);
    addResidentMemory(table, "resident memory after the first minute and at the end", afterWarmUp(),
                      last);
}

}  // namespace torture
