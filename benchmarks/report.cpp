#include "benchmarks/report.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace bench {

namespace {

std::string numberText(double number) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.3g", number);
    // Large numbers in full, without an exponent.
    constexpr double kThreeDigits = 1000.0;
    if (number >= kThreeDigits) {
        std::snprintf(text.data(), text.size(), "%.0f", number);
    }
    return text.data();
}

std::string floorText(const std::optional<Floor>& floor) {
    if (!floor) {
        return "-";
    }
    return (floor->kind == Floor::Kind::AtLeast ? ">= " : "<= ") + numberText(floor->number);
}

std::string verdict(double measured, const std::optional<Floor>& floor) {
    if (!floor) {
        return "-";
    }
    return floor->isReached(measured) ? "ok" : "MISSED";
}

void printLine(const std::string& figure, const std::string& measured, const std::string& floor,
               const std::string& verdictText, const std::string& remark) {
    std::printf("%-72s %9s %10s  %-7s %s\n", figure.c_str(), measured.c_str(), floor.c_str(),
                verdictText.c_str(), remark.c_str());
}

}  // namespace

void Report::add(const std::string& figure, double measured, std::optional<Floor> floor,
                 const std::string& remark) {
    m_rows.push_back({figure, measured, floor, remark});
}

void Report::print() const {
    printLine("figure", "measured", "floor", "verdict", "medians of one run");
    for (const Row& row : m_rows) {
        printLine(row.figure, numberText(row.measured), floorText(row.floor),
                  verdict(row.measured, row.floor), row.remark);
    }
}

bool Report::isPassed() const {
    return !isEmpty() && std::all_of(m_rows.begin(), m_rows.end(), [](const Row& row) {
        return !row.floor || row.floor->isReached(row.measured);
    });
}

std::string timeText(double seconds) {
    struct Unit {
        double seconds;
        const char* name;
    };
    constexpr std::array kUnits{Unit{1e-3, "ms"}, Unit{1e-6, "us"}, Unit{1e-9, "ns"}};
    const auto* const unit =
        std::find_if(kUnits.begin(), kUnits.end() - 1,
                     [seconds](const Unit& candidate) { return seconds >= candidate.seconds; });
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.3g %s", seconds / unit->seconds, unit->name);
    return text.data();
}

}  // namespace bench
