#pragma once

#include "irsdk/layout.h"

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace testsupport {

/**
 * A simulator block in memory: header, buffer descriptors, variable table, session text and the
 * ring of variable buffers, laid out by itself so that a test names only what it is about.
 *
 * Order of use: first the structure (variables, number of buffers, room for the session text), then
 * values, then anything broken on purpose. A change of the structure lays the block out anew;
 * broken values written before are lost then, and so are pointers and references taken before. The
 * staged snapshot keeps its values, the buffers of the ring start again as zeros.
 *
 *     TestBlock block;
 *     block.addVariable("Speed", irsdk_float, 1, "m/s");
 *     block.addVariable("CarIdxLap", irsdk_int, 64);
 *     block.set("Speed", 41.5);
 *     block.set("CarIdxLap", 3, 7);
 *     reader.getRawData(&block.header(), block.varHeaders(), block.snapshot());
 *
 * A name that is not in the table, an element or a buffer that does not exist is a mistake of the
 * test: the program ends with a message.
 */
class TestBlock {
public:
    TestBlock();

    /** Adds a variable after the ones before it, aligned to its element size; returns its index. */
    int addVariable(std::string_view name, std::int32_t type, int count = 1,
                    std::string_view unit = {}, std::string_view desc = {});

    /** The same at an offset of the test's choice within the buffer, which need not fit it. */
    int addVariableAt(int offset, std::string_view name, std::int32_t type, int count = 1,
                      std::string_view unit = {}, std::string_view desc = {});

    /** Buffers of the ring, at least 1; 3 unless set. */
    void setBufferCount(int count);

    /** Length of a buffer where it shall be longer than the variables need (never shorter). */
    void setBufferLength(int length);

    /** Bytes kept for the session text with its terminating zero; grows by itself when needed. */
    void setSessionCapacity(std::size_t bytes);

    /**
     * Sets an element of the staged snapshot, converted to the variable's type; `value` must be one
     * that the type can hold. A double holds every value of all six types.
     */
    void set(std::string_view name, double value, int element = 0);

    /** Sets all elements of a variable. */
    void setAll(std::string_view name, double value);

    /** Sets the elements of a character variable, the rest becoming zero. */
    void setText(std::string_view name, std::string_view text);

    /** Sets all bytes of the snapshot to zero. */
    void clearSnapshot();

    /** The session text; its update counter grows by one. */
    void setSessionText(std::string_view text);

    void setSessionUpdate(std::int32_t counter);
    void setStatus(std::int32_t status);
    void setTickRate(std::int32_t ticksASecond);

    /** Copies the staged snapshot into buffer `buffer` and gives it the tick count. */
    void complete(int buffer, std::int32_t tickCount);

    /** Completes the buffer after the one completed last, as a ring does; returns its index. */
    int completeNext(std::int32_t tickCount);

    /** The header inside bytes(); may be changed at will, fields made wrong on purpose included. */
    [[nodiscard]] irsdk_header& header();

    /** Descriptor of a buffer, inside bytes(). */
    [[nodiscard]] irsdk_varBuf& descriptor(int buffer);

    /** The variable table, inside bytes(). */
    [[nodiscard]] irsdk_varHeader* varHeaders();
    [[nodiscard]] irsdk_varHeader& variable(int index);
    [[nodiscard]] irsdk_varHeader& variable(std::string_view name);

    /** Index of a variable in the table, or -1. */
    [[nodiscard]] int indexOf(std::string_view name) const;

    /** The staged snapshot, snapshotLength() bytes on the heap and not one more. */
    [[nodiscard]] char* snapshot();
    [[nodiscard]] int snapshotLength();

    /** A buffer of the ring, inside bytes(). */
    [[nodiscard]] char* buffer(int index);

    /** The session text, inside bytes(). */
    [[nodiscard]] char* sessionText();

    /** The whole block as the simulator would publish it. */
    [[nodiscard]] std::vector<char>& bytes();

    /** Writes a value at any offset of the block. */
    template <typename T>
    void poke(std::size_t offset, T value) {
        std::memcpy(at(offset, sizeof value), &value, sizeof value);
    }

    /** Reads a value from any offset of the block. */
    template <typename T>
    [[nodiscard]] T peek(std::size_t offset) {
        T value{};
        std::memcpy(&value, at(offset, sizeof value), sizeof value);
        return value;
    }

private:
    void layOut();
    char* at(std::size_t offset, std::size_t length);
    const irsdk_varHeader& known(std::string_view name) const;

    std::vector<irsdk_varHeader> m_variables;
    std::vector<char> m_snapshot;
    std::vector<char> m_bytes;
    std::string m_session = "---\n";
    std::size_t m_sessionCapacity = 4096;
    std::int32_t m_sessionUpdate = 1;
    std::int32_t m_status = irsdk_stConnected;
    std::int32_t m_tickRate = 60;
    int m_bufferCount = 3;
    int m_variableBytes = 0;
    int m_wantedLength = 16;
    int m_lastCompleted = -1;
    bool m_laidOut = false;
};

}  // namespace testsupport
