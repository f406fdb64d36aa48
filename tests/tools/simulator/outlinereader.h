#pragma once

#include <map>
#include <sstream>
#include <string>
#include <vector>

/**
 * Reads the simulator's session text like a client that counts columns: a line is a section when
 * the next one is deeper, and a list entry is identified by the value of its first field. Only for
 * well-formed texts. Keeps all values in a map by path.
 */
class OutlineReader {
public:
    explicit OutlineReader(const std::string& text) {
        std::istringstream stream(text);
        std::string line;
        std::getline(stream, line);
        std::vector<std::string> lines;
        while (std::getline(stream, line)) {
            if (!line.empty()) {
                lines.push_back(line);
            }
        }
        for (std::size_t index = 0; index < lines.size(); ++index) {
            read(lines[index], index + 1 < lines.size() ? depth(lines[index + 1]) : 0);
        }
    }

    /** Whether there is a value, a section or a list entry at `path`. */
    bool has(const std::string& path) const { return m_values.count(path) > 0; }

    std::string value(const std::string& path) const {
        const auto found = m_values.find(path);
        return found == m_values.end() ? std::string() : found->second;
    }

private:
    static std::size_t depth(const std::string& line) {
        const std::size_t columns = line.find_first_not_of(' ');
        return columns + (line[columns] == '-' ? 1U : 0U);
    }

    void read(const std::string& line, std::size_t nextDepth) {
        const std::size_t own = depth(line);
        const std::string content = line.substr(line.find_first_not_of(' '));
        const std::size_t separator = content.find(": ");
        const bool isEntry = content[0] == '-';
        // The path has a name per column. A list entry is a column deeper than its mark.
        m_path.resize(own);
        if (isEntry) {
            m_path.push_back(content.substr(separator + 2));
            m_values[path()] = "";
        } else if (nextDepth > own) {
            m_path.push_back(content.substr(0, content.size() - 1));
            m_values[path()] = "";
        } else {
            m_path.push_back(content.substr(0, separator));
            m_values[path()] = separator == std::string::npos ? "" : content.substr(separator + 2);
            m_path.pop_back();
        }
    }

    std::string path() const {
        std::string path;
        for (const std::string& name : m_path) {
            path += (path.empty() ? "" : "/") + name;
        }
        return path;
    }

    std::vector<std::string> m_path;
    std::map<std::string, std::string> m_values;
};
