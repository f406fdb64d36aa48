#pragma once

#include "irsdk/layout.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace bench {

/**
 * The least that sampling can be: the same readings stored, in the same order, into nodes of the
 * same size that lie where an allocator puts them, found through a pointer each. There are no
 * names, no units, no variants and nobody to share with.
 */
class PlainNodes {
public:
    explicit PlainNodes(const std::vector<irsdk_varHeader>& table);

    [[nodiscard]] std::size_t count() const { return m_nodes.size(); }

    /** Stores all readings of a snapshot. */
    void store(const char* snapshot);

private:
    // Links, name, variant and unit of an entry of a sample's map take as much.
    static constexpr std::size_t bytesBefore = 56;
    static constexpr std::size_t bytesBehind = 48;

    struct Node {
        std::array<char, bytesBefore> before;
        union {
            std::int32_t integer;
            float single;
            double real;
            bool truth;
        };
        std::array<char, bytesBehind> behind;
    };

    /** A variable and the nodes that its elements go to; null for one that goes nowhere. */
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
