#include "tests/torture/resourcebook.h"

#include <algorithm>
#include <iterator>
#include <string>

namespace torture {

namespace {

constexpr double kMegabyte = 1024.0 * 1024.0;
constexpr std::size_t kMemoryLimit = std::size_t{2} * 1024 * 1024;

std::string pairOf(int first, int last) {
    return std::to_string(first) + ", " + std::to_string(last);
}

std::string megabytes(std::size_t first, std::size_t last, int decimals) {
    return number(static_cast<double>(first) / kMegabyte, decimals) + ", " +
           number(static_cast<double>(last) / kMegabyte, decimals, "MiB");
}

}  // namespace

void ResourceBook::measure() {
    m_entries.push_back({Clock::now(), Resources::now()});
}

/** In a run that is too short to settle, as it was at first. */
const Resources& ResourceBook::settled() const {
    const auto found = std::find_if(m_entries.begin(), m_entries.end(), [this](const Entry& entry) {
        return entry.at - m_start > m_settlingTime;
    });
    const bool hasSuccessor = found != m_entries.end() && std::next(found) != m_entries.end();
    return hasSuccessor ? found->held : m_entries.front().held;
}

void ResourceBook::addTo(Table& table) const {
    const bool isComparison = m_entries.size() > 1;
    table.add("measurements of what the host holds", number(static_cast<double>(m_entries.size())),
              "at least 2", isComparison);
    if (!isComparison) {
        return;
    }
    const Resources& first = m_entries.front().held;
    const Resources& last = m_entries.back().held;
    table.add("open files at the first connection and at the end",
              pairOf(first.descriptors, last.descriptors), "the same",
              first.descriptors == last.descriptors);
    table.add("named mappings at the first connection and at the end",
              pairOf(first.namedMaps, last.namedMaps), "the same",
              first.namedMaps == last.namedMaps);
    const char* const memory = "memory in use after the first minute and at the end";
    if (Resources::knowsMemoryInUse) {
        table.add(memory, megabytes(settled().inUse, last.inUse, 2), "at most 2 MiB more",
                  last.inUse <= settled().inUse + kMemoryLimit);
    } else {
        table.add(memory, "not known under the address sanitizer");
    }
    table.add("resident memory after the first minute and at the end",
              megabytes(settled().resident, last.resident, 1));
}

}  // namespace torture
