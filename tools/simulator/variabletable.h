#pragma once

#include "irsdk/layout.h"
#include "tools/simulator/options.h"
#include "tools/simulator/playback.h"
#include "tools/simulator/world.h"

#include <cstddef>
#include <functional>
#include <span>
#include <string>
#include <vector>

namespace simulator {

/** The sources of the variables' values. */
struct Scene {
    const World& world;
    const Playback& playback;
};

/** A published variable and the function that computes its elements. */
struct Variable {
    std::string name;
    irsdk_VarType type;
    int count;
    std::string unit;
    std::string description;
    bool countAsTime = false;
    std::function<double(const Scene&, int element)> value;
    std::size_t offset = 0;  // of the first element in a buffer, set by the table
};

/**
 * The variables of a run in the order of the published table, with their offsets in a buffer. Each
 * offset is a multiple of the element's size. The table is immutable.
 */
class VariableTable {
public:
    /** The default variables with the changes that the options ask for. */
    explicit VariableTable(const Options& options);

    const std::vector<Variable>& variables() const { return m_variables; }

    /** The table as it is published. */
    [[nodiscard]] std::vector<irsdk_varHeader> headers() const;

    /** Bytes of one buffer, a multiple of 16. */
    std::size_t bufferLength() const { return m_bufferLength; }

    /** The variable called `name`, or null. */
    const Variable* find(const std::string& name) const;

    /** Writes the snapshot of `scene` into `buffer` of bufferLength() bytes, checksum included. */
    void write(const Scene& scene, std::span<std::byte> buffer) const;

private:
    void layOut(std::size_t firstOffset);

    std::vector<Variable> m_variables;
    std::size_t m_bufferLength = 0;
    std::size_t m_checksumOffset = 0;
};

/** The session's and the own car's variables. */
void addOwnCarVariables(std::vector<Variable>& variables);

/** The variables of the own car's wheels and of the samples within a tick. */
void addWheelVariables(std::vector<Variable>& variables);

/** The arrays with an element per car. */
void addPerCarVariables(std::vector<Variable>& variables);

}  // namespace simulator
