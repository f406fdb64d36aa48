#pragma once

#include <string>
#include <vector>

namespace torture {

/** What a run has measured, what was asked of it, and whether that holds. */
class Table {
public:
    /** A figure of which nothing is asked. */
    void add(const std::string& name, const std::string& value);

    /** A figure that has to be as `demand` says. */
    void add(const std::string& name, const std::string& value, const std::string& demand,
             bool holds);

    [[nodiscard]] bool holds() const;
    void print() const;

private:
    struct Row {
        std::string name;
        std::string value;
        std::string demand;
        bool holds = true;
    };

    std::vector<Row> m_rows;
};

/** A number with so many decimals, and with its unit. */
[[nodiscard]] std::string number(double value, int decimals = 0, const char* unit = "");

}  // namespace torture
