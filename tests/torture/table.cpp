#include "tests/torture/table.h"

#include <algorithm>
#include <cstdio>

namespace torture {

void Table::add(const std::string& name, const std::string& value) {
    m_rows.push_back({name, value, {}, true});
}

void Table::add(const std::string& name, const std::string& value, const std::string& requirement,
                bool isMet) {
    m_rows.push_back({name, value, requirement, isMet});
}

bool Table::isPassed() const {
    return std::all_of(m_rows.begin(), m_rows.end(), [](const Row& row) { return row.isMet; });
}

void Table::print() const {
    std::printf("| figure | measured | asked for | verdict |\n|---|---|---|---|\n");
    for (const Row& row : m_rows) {
        std::printf("| %s | %s | %s | %s |\n", row.name.c_str(), row.value.c_str(),
                    row.requirement.c_str(),
                    row.requirement.empty() ? ""
                    : row.isMet             ? "ok"
                                            : "FAILED");
    }
    std::fflush(stdout);
}

std::string number(double value, int decimals, const char* unit) {
    constexpr std::size_t kRoom = 64;
    char text[kRoom];
    std::snprintf(text, sizeof text, "%.*f%s%s", decimals, value, *unit == '\0' ? "" : " ", unit);
    return text;
}

}  // namespace torture
