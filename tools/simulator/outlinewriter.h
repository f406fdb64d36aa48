#pragma once

#include "tools/simulator/text.h"

#include <string>
#include <utility>

namespace simulator {

/**
 * Writes the simulator's indented text format: one column of indentation per level, and list
 * entries marked with "- " in the column of the list's own line. Readers count columns, so the
 * indentation must stay exactly like this.
 */
class OutlineWriter {
public:
    /** Opens "Key:". Everything until close() is below it. */
    void section(const std::string& key) { line(m_depth++, key + ":"); }

    /** A "Key:" with nothing below it. */
    void emptySection(const std::string& key) { line(m_depth, key + ":"); }

    /** Opens the list entry "- Key: value". Everything until close() is below it. */
    void entry(const std::string& key, int value) {
        line(m_depth++ - 1, "- " + key + ": " + std::to_string(value));
    }

    void close() { --m_depth; }

    void value(const std::string& key, const std::string& text) {
        line(m_depth, key + ": " + text);
    }
    void value(const std::string& key, const char* text) { value(key, std::string(text)); }
    void value(const std::string& key, long long number) { value(key, std::to_string(number)); }
    void value(const std::string& key, int number) { value(key, std::to_string(number)); }
    void value(const std::string& key, double number, int digits, const std::string& unit = "") {
        value(key, fixedText(number, digits) + (unit.empty() ? "" : " " + unit));
    }

    /** A line without indentation. */
    void bare(const std::string& text) { line(0, text); }

    std::string take() { return std::exchange(m_text, {}); }

private:
    void line(int columns, const std::string& text) {
        m_text.append(static_cast<std::size_t>(columns), ' ');
        m_text += text;
        m_text += '\n';
    }

    std::string m_text;
    int m_depth = 0;
};

}  // namespace simulator
