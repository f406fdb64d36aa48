#include "tools/simulator/variabletable.h"

#include "tools/simulator/checksum.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace simulator {

namespace {

constexpr std::size_t kBufferAlignment = 16;

std::size_t roundedUp(std::size_t value, std::size_t step) {
    return (value + step - 1) / step * step;
}

template <typename Element>
void put(std::byte* at, double value) {
    const auto element = static_cast<Element>(value);
    std::memcpy(at, &element, sizeof element);
}

void putElement(irsdk_VarType type, std::byte* at, double value) {
    switch (type) {
        case irsdk_char:
            put<std::int8_t>(at, value);
            break;
        case irsdk_bool:
            put<std::uint8_t>(at, value != 0.0 ? 1.0 : 0.0);
            break;
        case irsdk_int:
            put<std::int32_t>(at, value);
            break;
        case irsdk_bitField:
            // Only an unsigned type can hold the highest bit.
            put<std::uint32_t>(at, value);
            break;
        case irsdk_float:
            put<float>(at, value);
            break;
        case irsdk_double:
            put<double>(at, value);
            break;
    }
}

void copyText(char* to, std::size_t room, const std::string& text) {
    std::copy_n(text.begin(), std::min(room, text.size()), to);
}

void addChecksum(std::vector<Variable>& variables) {
    variables.push_back({.name = kChecksumName,
                         .type = irsdk_int,
                         .count = 1,
                         .unit = "",
                         .description = "Checksum of all other words of this snapshot",
                         .value = [](const Scene&, int) { return 0.0; }});
}

void addExtraVariables(std::vector<Variable>& variables, int count) {
    for (int number = 0; number < count; ++number) {
        variables.push_back({.name = "ExtraVariable" + std::to_string(number),
                             .type = irsdk_float,
                             .count = 1,
                             .unit = "",
                             .description = "A variable of a later version",
                             .value = [number](const Scene& scene, int) {
                                 return wave(scene.world.sessionSeconds() / (10.0 + number));
                             }});
    }
}

void shuffle(std::vector<Variable>& variables, Random random) {
    for (std::size_t left = variables.size(); left > 1; --left) {
        std::swap(variables[left - 1],
                  variables[static_cast<std::size_t>(random.below(static_cast<int>(left)))]);
    }
}

}  // namespace

VariableTable::VariableTable(const Options& options) {
    addOwnCarVariables(m_variables);
    addWheelVariables(m_variables);
    addPerCarVariables(m_variables);
    addChecksum(m_variables);
    addExtraVariables(m_variables, options.extraVariables);
    if (options.shuffleVariables) {
        constexpr std::uint64_t kShuffleStream = 7;
        shuffle(m_variables, Random(options.seed).stream(kShuffleStream));
    }
    layOut(roundedUp(static_cast<std::size_t>(options.padBuffer), kBufferAlignment));
}

const Variable* VariableTable::find(const std::string& name) const {
    const auto found = std::find_if(m_variables.begin(), m_variables.end(),
                                    [&](const Variable& each) { return each.name == name; });
    return found == m_variables.end() ? nullptr : &*found;
}

std::vector<irsdk_varHeader> VariableTable::headers() const {
    std::vector<irsdk_varHeader> headers;
    for (const Variable& variable : m_variables) {
        irsdk_varHeader& entry = headers.emplace_back();
        entry.type = variable.type;
        entry.offset = static_cast<std::int32_t>(variable.offset);
        entry.count = variable.count;
        entry.countAsTime = variable.countAsTime ? 1 : 0;
        copyText(entry.name, sizeof entry.name, variable.name);
        // These two always end with a zero.
        copyText(entry.desc, sizeof entry.desc - 1, variable.description);
        copyText(entry.unit, sizeof entry.unit - 1, variable.unit);
    }
    return headers;
}

void VariableTable::write(const Scene& scene, std::span<std::byte> buffer) const {
    for (const Variable& variable : m_variables) {
        const std::size_t size = irsdk_varTypeSize(variable.type);
        std::byte* at = buffer.data() + variable.offset;
        for (int element = 0; element < variable.count; ++element, at += size) {
            putElement(variable.type, at, variable.value(scene, element));
        }
    }
    const std::int32_t checksum = snapshotChecksum(buffer, m_checksumOffset);
    std::memcpy(buffer.data() + m_checksumOffset, &checksum, sizeof checksum);
}

void VariableTable::layOut(std::size_t firstOffset) {
    std::size_t offset = firstOffset;
    for (Variable& variable : m_variables) {
        const std::size_t size = std::max<std::size_t>(1, irsdk_varTypeSize(variable.type));
        variable.offset = roundedUp(offset, size);
        offset = variable.offset + size * static_cast<std::size_t>(variable.count);
        if (variable.name == kChecksumName) {
            m_checksumOffset = variable.offset;
        }
    }
    m_bufferLength = roundedUp(offset, kBufferAlignment);
}

}  // namespace simulator
