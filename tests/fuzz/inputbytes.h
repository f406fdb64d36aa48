#pragma once

#include <cstddef>
#include <cstdint>

namespace fuzz {

/** Takes an input byte by byte; behind its end come zeros. */
class InputBytes {
public:
    InputBytes(const std::uint8_t* data, std::size_t size) : m_data(data), m_left(size) {}

    [[nodiscard]] bool isEmpty() const { return m_left == 0; }

    [[nodiscard]] int take() {
        if (m_left == 0) {
            return 0;
        }
        --m_left;
        return *m_data++;
    }

private:
    const std::uint8_t* m_data;
    std::size_t m_left;
};

}  // namespace fuzz
