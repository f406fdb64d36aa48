#pragma once

#include <string>
#include <vector>

namespace torture {

/** The measured figures of a run, the requirements, and whether they are met. */
class Table {
public:
    /** A figure without a requirement. */
    void add(const std::string& name, const std::string& value);

    void add(const std::string& name, const std::string& value, const std::string& requirement,
             bool isMet);

    [[nodiscard]] bool isPassed() const;
    void print() const;

private:
    struct Row {
        std::string name;
        std::string value;
        std::string requirement;
        bool isMet = true;
    };

    std::vector<Row> m_rows;
};

[[nodiscard]] std::string number(double value, int decimals = 0, const char* unit = "");

}  // namespace torture
