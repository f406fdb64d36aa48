#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace simulator {

/** The int variable that holds the checksum of its snapshot. */
inline constexpr char kChecksumName[] = "SnapshotChecksum";

/**
 * The checksum of a snapshot over all 32-bit words of the buffer in order, except the word at
 * `checksumOffset`, which holds the checksum itself. A reader that mixes two snapshots gets another
 * sum. `checksumOffset` is a multiple of 4. Bytes after the last whole word do not count.
 */
inline std::int32_t snapshotChecksum(std::span<const std::byte> buffer,
                                     std::size_t checksumOffset) {
    std::uint32_t sum = 0x811C9DC5U;
    for (std::size_t at = 0; at + sizeof(std::uint32_t) <= buffer.size();
         at += sizeof(std::uint32_t)) {
        if (at == checksumOffset) {
            continue;
        }
        std::uint32_t word = 0;
        std::memcpy(&word, buffer.data() + at, sizeof word);
        sum = (std::rotl(sum, 5) ^ word) * 0x9E3779B1U;
    }
    return static_cast<std::int32_t>(sum);
}

}  // namespace simulator
