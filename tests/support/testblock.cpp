#include "tests/support/testblock.h"

#include "tools/publisher/block.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstdlib>

namespace testsupport {

namespace {

std::size_t alignedUp(std::size_t offset, std::size_t alignment) {
    return (offset + alignment - 1) / alignment * alignment;
}

[[noreturn]] void misuse(const char* what, std::string_view name) {
    std::fprintf(stderr, "TestBlock: %s: %.*s\n", what, static_cast<int>(name.size()), name.data());
    std::abort();
}

template <std::size_t Size>
void copyText(char (&field)[Size], std::string_view text) {
    if (text.size() > Size) {
        misuse("text longer than its field", text);
    }
    std::copy(text.begin(), text.end(), field);
}

std::string_view nameOf(const irsdk_varHeader& variable) {
    const char* end = std::find(variable.name, variable.name + IRSDK_MAX_STRING, '\0');
    return {variable.name, static_cast<std::size_t>(end - variable.name)};
}

template <typename T>
void store(char* target, double value) {
    const T element = static_cast<T>(value);
    std::memcpy(target, &element, sizeof element);
}

void storeElement(char* target, std::int32_t type, double value) {
    switch (type) {
        case irsdk_char:
            store<std::int8_t>(target, value);
            break;
        case irsdk_bool:
            store<std::uint8_t>(target, value);
            break;
        case irsdk_float:
            store<float>(target, value);
            break;
        case irsdk_double:
            store<double>(target, value);
            break;
        default:
            store<std::int32_t>(target, value);
            break;
    }
}

/** Elements of an unknown type take four bytes, so that the variables after them stay apart. */
std::size_t elementSize(std::int32_t type) {
    const std::size_t size = irsdk_varTypeSize(type);
    return size == 0 ? sizeof(std::int32_t) : size;
}

}  // namespace

TestBlock::TestBlock() = default;

int TestBlock::addVariable(std::string_view name, std::int32_t type, int count,
                           std::string_view unit, std::string_view desc) {
    const std::size_t size = elementSize(type);
    const auto offset =
        static_cast<int>(alignedUp(static_cast<std::size_t>(m_variableBytes), size));
    m_variableBytes = offset + static_cast<int>(size) * std::max(count, 0);
    return addVariableAt(offset, name, type, count, unit, desc);
}

int TestBlock::addVariableAt(int offset, std::string_view name, std::int32_t type, int count,
                             std::string_view unit, std::string_view desc) {
    irsdk_varHeader variable{};
    variable.type = type;
    variable.offset = offset;
    variable.count = count;
    copyText(variable.name, name);
    copyText(variable.desc, desc);
    copyText(variable.unit, unit);
    m_variables.push_back(variable);
    m_laidOut = false;
    return static_cast<int>(m_variables.size()) - 1;
}

void TestBlock::setBufferCount(int count) {
    m_bufferCount = std::max(count, 1);
    m_laidOut = false;
}

void TestBlock::setBufferLength(int length) {
    m_wantedLength = length;
    m_laidOut = false;
}

void TestBlock::setSessionCapacity(std::size_t bytes) {
    m_sessionCapacity = bytes;
    m_laidOut = false;
}

void TestBlock::set(std::string_view name, double value, int element) {
    const irsdk_varHeader variable = known(name);
    const std::size_t size = elementSize(variable.type);
    const std::size_t first = static_cast<std::size_t>(variable.offset) +
                              size * static_cast<std::size_t>(std::max(element, 0));
    char* data = snapshot();
    if (element < 0 || element >= variable.count || variable.offset < 0 ||
        first + size > m_snapshot.size()) {
        misuse("no such element of variable", name);
    }
    storeElement(data + first, variable.type, value);
}

void TestBlock::setAll(std::string_view name, double value) {
    const int count = known(name).count;
    for (int element = 0; element < count; ++element) {
        set(name, value, element);
    }
}

void TestBlock::setText(std::string_view name, std::string_view text) {
    const auto count = static_cast<std::size_t>(known(name).count);
    if (text.size() > count) {
        misuse("text longer than its variable", name);
    }
    for (std::size_t i = 0; i < count; ++i) {
        set(name, i < text.size() ? text[i] : 0, static_cast<int>(i));
    }
}

void TestBlock::clearSnapshot() {
    layOut();
    std::fill(m_snapshot.begin(), m_snapshot.end(), '\0');
}

void TestBlock::setSessionText(std::string_view text) {
    m_session = text;
    ++m_sessionUpdate;
    if (!m_laidOut) {
        return;
    }
    if (text.size() >= m_sessionCapacity) {
        m_laidOut = false;
        return;
    }
    std::fill_n(sessionText(), m_sessionCapacity, '\0');
    std::copy(text.begin(), text.end(), sessionText());
    header().sessionInfoUpdate = m_sessionUpdate;
}

void TestBlock::setSessionUpdate(std::int32_t counter) {
    m_sessionUpdate = counter;
    header().sessionInfoUpdate = counter;
}

void TestBlock::setStatus(std::int32_t status) {
    m_status = status;
    header().status = status;
}

void TestBlock::setTickRate(std::int32_t ticksASecond) {
    m_tickRate = ticksASecond;
    header().tickRate = ticksASecond;
}

void TestBlock::complete(int buffer, std::int32_t tickCount) {
    std::memcpy(this->buffer(buffer), snapshot(), m_snapshot.size());
    descriptor(buffer).tickCount = tickCount;
    m_lastCompleted = buffer;
}

int TestBlock::completeNext(std::int32_t tickCount) {
    complete((m_lastCompleted + 1) % m_bufferCount, tickCount);
    return m_lastCompleted;
}

irsdk_header& TestBlock::header() {
    return *reinterpret_cast<irsdk_header*>(bytes().data());
}

irsdk_varBuf& TestBlock::descriptor(int buffer) {
    if (buffer < 0 || buffer >= m_bufferCount) {
        misuse("no such buffer", std::to_string(buffer));
    }
    layOut();
    const auto offset = static_cast<std::size_t>(irsdk_varBufOffset(buffer));
    return *reinterpret_cast<irsdk_varBuf*>(at(offset, sizeof(irsdk_varBuf)));
}

irsdk_varHeader* TestBlock::varHeaders() {
    layOut();
    const auto offset = static_cast<std::size_t>(header().varHeaderOffset);
    return reinterpret_cast<irsdk_varHeader*>(at(offset, 0));
}

irsdk_varHeader& TestBlock::variable(int index) {
    if (index < 0 || static_cast<std::size_t>(index) >= m_variables.size()) {
        misuse("no such variable", std::to_string(index));
    }
    return varHeaders()[index];
}

irsdk_varHeader& TestBlock::variable(std::string_view name) {
    known(name);
    return variable(indexOf(name));
}

int TestBlock::indexOf(std::string_view name) const {
    for (std::size_t i = 0; i < m_variables.size(); ++i) {
        if (nameOf(m_variables[i]) == name) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

char* TestBlock::snapshot() {
    layOut();
    return m_snapshot.data();
}

int TestBlock::snapshotLength() {
    layOut();
    return static_cast<int>(m_snapshot.size());
}

char* TestBlock::buffer(int index) {
    const auto offset = static_cast<std::size_t>(descriptor(index).bufferOffset);
    return at(offset, m_snapshot.size());
}

char* TestBlock::sessionText() {
    const auto offset = static_cast<std::size_t>(header().sessionInfoOffset);
    return at(offset, m_sessionCapacity);
}

std::vector<char>& TestBlock::bytes() {
    layOut();
    return m_bytes;
}

void TestBlock::layOut() {
    if (m_laidOut) {
        return;
    }
    m_laidOut = true;
    m_sessionCapacity = std::max(m_sessionCapacity, m_session.size() + 1);

    const auto length = static_cast<std::size_t>(std::max(m_variableBytes, m_wantedLength));
    const publisher::BlockLayout layout({.tickRate = m_tickRate,
                                         .bufferCount = m_bufferCount,
                                         .bufferLength = length,
                                         .textRoom = m_sessionCapacity,
                                         .textAreas = 1},
                                        m_variables.size());
    m_snapshot.resize(length);
    m_snapshot.shrink_to_fit();
    m_bytes.assign(layout.size, '\0');
    m_lastCompleted = -1;
    layout.write(std::as_writable_bytes(std::span(m_bytes)), m_variables);
    header().status = m_status;
    header().sessionInfoUpdate = m_sessionUpdate;
    std::copy(m_session.begin(), m_session.end(), sessionText());
}

char* TestBlock::at(std::size_t offset, std::size_t length) {
    layOut();
    if (offset > m_bytes.size() || length > m_bytes.size() - offset) {
        misuse("outside the block", std::to_string(offset));
    }
    return m_bytes.data() + offset;
}

const irsdk_varHeader& TestBlock::known(std::string_view name) const {
    const int index = indexOf(name);
    if (index < 0) {
        misuse("no such variable", name);
    }
    return m_variables[static_cast<std::size_t>(index)];
}

}  // namespace testsupport
