#pragma once

#include <optional>
#include <string>
#include <vector>

namespace bench {

/** The limit of a figure. */
struct Floor {
    enum class Kind { AtLeast, AtMost };
    Kind kind;
    double number;

    [[nodiscard]] bool isReached(double measured) const {
        return kind == Kind::AtLeast ? measured >= number : measured <= number;
    }
};

[[nodiscard]] constexpr Floor atLeast(double number) {
    return {Floor::Kind::AtLeast, number};
}

[[nodiscard]] constexpr Floor atMost(double number) {
    return {Floor::Kind::AtMost, number};
}

/** Collects figures and prints them as one table. */
class Report {
public:
    /** A figure with its floor; without a floor it is for information only. */
    void add(const std::string& figure, double measured, std::optional<Floor> floor,
             const std::string& remark = {});

    void print() const;

    [[nodiscard]] bool isEmpty() const { return m_rows.empty(); }

    /** Whether every figure reaches its floor; false for a report without figures. */
    [[nodiscard]] bool isPassed() const;

private:
    struct Row {
        std::string figure;
        double measured;
        std::optional<Floor> floor;
        std::string remark;
    };

    std::vector<Row> m_rows;
};

/** "27.1 us", in the unit that suits the number. */
[[nodiscard]] std::string timeText(double seconds);

}  // namespace bench
