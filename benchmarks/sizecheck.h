#pragma once

#include <cstddef>

namespace bench {

/**
 * Asks the system how large the simulator's block is: what every reader of shared memory has to do
 * before it touches memory that another process may cut off.
 */
class SizeCheck {
public:
    /** Opens the block, which is there already. */
    SizeCheck();
    ~SizeCheck();
    SizeCheck(const SizeCheck&) = delete;
    SizeCheck& operator=(const SizeCheck&) = delete;

    [[nodiscard]] std::size_t size() const;

private:
    int m_descriptor;
};

}  // namespace bench
