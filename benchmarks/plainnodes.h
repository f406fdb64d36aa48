#pragma once

#include "irsdk/layout.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace bench {

/**
 * The least work that sampling can be: it stores the same readings in the same order into nodes of
 * the same size, each allocated separately and reached through a pointer. There are no names, units
 * or variants, and nothing is shared.
 */
class PlainNodes {
public:
    explicit PlainNodes(const std::vector<irsdk_varHeader>& table);

    [[nodiscard]] std::size_t count() const { return m_nodes.size(); }

    /** Stores all readings of a snapshot. */
    void store(const char* snapshot);

private:
    // The size of an entry of a sample's map: links, name, variant and unit.
    static constexpr std::size_t kBytesBefore = 56;
    static constexpr std::size_t kBytesAfter = 48;

    struct Node {
        std::array<char, kBytesBefore> before;
        union {
            std::int32_t integer;
            float single;
            double real;
            bool truth;
        };
        std::array<char, kBytesAfter> after;
    };

    /** A variable and the nodes of its elements; null for an element that is not stored. */
    struct Column {
        std::int32_t type;
        std::int32_t offset;
        std::vector<Node*> nodes;
    };

    template <typename Element, typename Store>
    static void storeColumn(const Column& column, const char* snapshot, Store store);

    std::vector<std::unique_ptr<Node>> m_nodes;
    std::vector<Column> m_columns;
};

}  // namespace bench
