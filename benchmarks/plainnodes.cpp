#include "benchmarks/plainnodes.h"

#include "benchmarks/workload.h"

#include <cstring>
#include <string_view>

namespace bench {

namespace {

bool isPerCar(const irsdk_varHeader& variable) {
    return std::string_view(variable.name).starts_with(kPerCarPrefix);
}

}  // namespace

PlainNodes::PlainNodes(const std::vector<irsdk_varHeader>& table) {
    for (const irsdk_varHeader& variable : table) {
        m_columns.push_back({variable.type, variable.offset, {}});
    }
    // Car by car, because the entries of one sample's map are allocated one after another.
    for (int car = 0; car < kCarCount; ++car) {
        for (std::size_t i = 0; i < table.size(); ++i) {
            const bool isStored = isPerCar(table[i]) != (car == kOwnCar);
            if (isStored) {
                m_nodes.push_back(std::make_unique<Node>());
            }
            if (isPerCar(table[i])) {
                m_columns[i].nodes.push_back(isStored ? m_nodes.back().get() : nullptr);
            } else if (isStored) {
                // Of an array of the own car the last element is kept.
                m_columns[i].offset +=
                    (table[i].count - 1) * static_cast<int>(irsdk_varTypeSize(table[i].type));
                m_columns[i].nodes.push_back(m_nodes.back().get());
            }
        }
    }
    // The session's clock, which every other car gets as well.
    for (std::size_t i = 0; i < table.size(); ++i) {
        const std::string_view name(table[i].name);
        if (name == "SessionTime" || name == "SessionTimeRemain" || name == "SessionTick") {
            for (int car = 0; car < kCarCount; ++car) {
                m_nodes.push_back(std::make_unique<Node>());
                m_columns.push_back({table[i].type, table[i].offset, {m_nodes.back().get()}});
            }
        }
    }
}

template <typename Element, typename Store>
void PlainNodes::storeColumn(const Column& column, const char* snapshot, Store store) {
    const char* bytes = snapshot + column.offset;
    for (Node* const node : column.nodes) {
        if (node != nullptr) {
            Element element;
            std::memcpy(&element, bytes, sizeof element);
            store(*node, element);
        }
        bytes += sizeof(Element);
    }
}

void PlainNodes::store(const char* snapshot) {
    for (const Column& column : m_columns) {
        switch (column.type) {
            case irsdk_bool:
                storeColumn<char>(column, snapshot,
                                  [](Node& node, char element) { node.truth = element != 0; });
                break;
            case irsdk_int:
            case irsdk_bitField:
                storeColumn<std::int32_t>(column, snapshot, [](Node& node, std::int32_t element) {
                    node.integer = element;
                });
                break;
            case irsdk_float:
                storeColumn<float>(column, snapshot,
                                   [](Node& node, float element) { node.single = element; });
                break;
            case irsdk_double:
                storeColumn<double>(column, snapshot,
                                    [](Node& node, double element) { node.real = element; });
                break;
            default:
                break;
        }
    }
}

}  // namespace bench
