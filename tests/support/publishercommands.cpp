#include "tests/support/publishercommands.h"

#include "irsdk/layout.h"
#include "tests/support/checkedsnapshot.h"
#include "tools/publisher/block.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <map>
#include <sstream>
#include <string_view>

namespace testsupport {

namespace {

constexpr std::string_view kHexDigits = "0123456789abcdef";
constexpr unsigned int kHalfByte = 4;
constexpr unsigned int kLowHalf = 15;

const std::string kOk = "ok";

std::string answer(bool good, const char* otherwise) {
    return good ? kOk : std::string("error ") + otherwise;
}

std::vector<char> fromHex(std::string_view text) {
    std::vector<char> bytes;
    if (text == "-") {
        return bytes;
    }
    bytes.reserve(text.size() / 2);
    for (std::size_t i = 0; i + 1 < text.size(); i += 2) {
        const std::size_t value =
            (kHexDigits.find(text[i]) << kHalfByte) | kHexDigits.find(text[i + 1]);
        bytes.push_back(static_cast<char>(static_cast<unsigned char>(value)));
    }
    return bytes;
}

template <typename T>
T number(const std::vector<std::string>& words, std::size_t index) {
    T value{};
    if (index < words.size()) {
        const std::string& word = words[index];
        std::from_chars(word.data(), word.data() + word.size(), value);
    }
    return value;
}

std::string word(const std::vector<std::string>& words, std::size_t index) {
    return index < words.size() ? words[index] : std::string();
}

std::atomic_ref<std::int32_t> atomicField(char* address) {
    return std::atomic_ref<std::int32_t>(*reinterpret_cast<std::int32_t*>(address));
}

std::size_t descriptorAt(std::int32_t buffer) {
    return static_cast<std::size_t>(irsdk_varBufOffset(buffer));
}

}  // namespace

std::string toHex(const void* bytes, std::size_t count) {
    if (count == 0) {
        return "-";
    }
    std::string text;
    text.reserve(2 * count);
    const auto* byte = static_cast<const unsigned char*>(bytes);
    for (std::size_t i = 0; i < count; ++i) {
        text += kHexDigits[byte[i] >> kHalfByte];
        text += kHexDigits[byte[i] & kLowHalf];
    }
    return text;
}

std::string toHex(const std::vector<char>& bytes) {
    return toHex(bytes.data(), bytes.size());
}

PublisherCommands::~PublisherCommands() {
    stopWriter();
}

std::string PublisherCommands::run(const std::string& line) {
    std::istringstream stream(line);
    Words words;
    for (std::string text; stream >> text;) {
        words.push_back(text);
    }
    return words.empty() ? "error nothing to do" : runWords(words);
}

std::string PublisherCommands::runWords(const Words& words) {
    using Command = std::string (PublisherCommands::*)(const Words&);
    static const std::map<std::string, Command> kCommands{
        {"block", &PublisherCommands::createBlock},
        {"empty", &PublisherCommands::createEmptyBlock},
        {"event", &PublisherCommands::createEvent},
        {"poke", &PublisherCommands::poke},
        {"peek", &PublisherCommands::peek},
        {"bytes", &PublisherCommands::writeBytes},
        {"status", &PublisherCommands::setStatus},
        {"tick", &PublisherCommands::setTick},
        {"complete", &PublisherCommands::complete},
        {"checked", &PublisherCommands::completeChecked},
        {"signal", &PublisherCommands::signal},
        {"session", &PublisherCommands::setSession},
        {"write", &PublisherCommands::writeAtFullSpeed},
        {"every", &PublisherCommands::writeWithPauses},
        {"bump", &PublisherCommands::bumpSessionCounter},
        {"flip", &PublisherCommands::flipByte},
        {"stop", &PublisherCommands::stop},
        {"truncate", &PublisherCommands::truncate},
        {"truncate-event", &PublisherCommands::truncateEvent},
        {"unlink", &PublisherCommands::unlink},
        {"chown", &PublisherCommands::chown},
    };
    const auto command = kCommands.find(words[0]);
    return command == kCommands.end() ? "error no such command: " + words[0]
                                      : (this->*command->second)(words);
}

bool PublisherCommands::fits(std::int64_t offset, std::size_t length) const {
    const std::size_t size = m_objects.blockSize();
    return offset >= 0 && length <= size && static_cast<std::size_t>(offset) <= size - length;
}

std::int32_t PublisherCommands::field(std::size_t offset) const {
    if (!fits(static_cast<std::int64_t>(offset), sizeof(std::int32_t))) {
        return 0;
    }
    return atomicField(m_objects.block() + offset).load();
}

bool PublisherCommands::setField(std::size_t offset, std::int32_t value) {
    if (!fits(static_cast<std::int64_t>(offset), sizeof value)) {
        return false;
    }
    atomicField(m_objects.block() + offset).store(value);
    return true;
}

std::string PublisherCommands::createBlock(const Words& words) {
    const std::vector<char> bytes = fromHex(word(words, 1));
    const bool present = m_objects.blockSize() >= bytes.size() && m_objects.block() != nullptr;
    if (!present && !m_objects.createBlock(bytes.size())) {
        return "error the block cannot be created";
    }
    std::copy(bytes.begin(), bytes.end(), m_objects.block());
    return kOk;
}

std::string PublisherCommands::createEmptyBlock(const Words& words) {
    return answer(m_objects.createBlock(number<std::size_t>(words, 1)),
                  "the block cannot be created");
}

std::string PublisherCommands::createEvent(const Words& words) {
    const bool manual = word(words, 1) == "manual";
    return answer(m_objects.createEvent(manual ? publisher::EventKind::ManualReset
                                               : publisher::EventKind::AutoReset),
                  "the event cannot be created");
}

std::string PublisherCommands::poke(const Words& words) {
    return answer(setField(number<std::size_t>(words, 1), number<std::int32_t>(words, 2)),
                  "outside the block");
}

std::string PublisherCommands::peek(const Words& words) {
    return kOk + ' ' + std::to_string(field(number<std::size_t>(words, 1)));
}

std::string PublisherCommands::writeBytes(const Words& words) {
    const auto offset = number<std::int64_t>(words, 1);
    const std::vector<char> bytes = fromHex(word(words, 2));
    if (!fits(offset, bytes.size())) {
        return "error outside the block";
    }
    std::copy(bytes.begin(), bytes.end(), m_objects.block() + offset);
    return kOk;
}

std::string PublisherCommands::setStatus(const Words& words) {
    return answer(setField(offsetof(irsdk_header, status), number<std::int32_t>(words, 1)),
                  "no block");
}

std::string PublisherCommands::setTick(const Words& words) {
    const std::size_t descriptor = descriptorAt(number<std::int32_t>(words, 1));
    return answer(
        setField(descriptor + offsetof(irsdk_varBuf, tickCount), number<std::int32_t>(words, 2)),
        "no such buffer");
}

bool PublisherCommands::overwrite(std::int32_t buffer, std::int32_t tickCount,
                                  const std::vector<char>& payload) {
    const std::size_t descriptor = descriptorAt(buffer);
    if (!fits(static_cast<std::int64_t>(descriptor), sizeof(irsdk_varBuf)) ||
        !fits(field(descriptor + offsetof(irsdk_varBuf, bufferOffset)), payload.size())) {
        return false;
    }
    publisher::overwriteBuffer(m_objects.NamedObjects::block(), buffer,
                               std::as_bytes(std::span(payload)), tickCount);
    return m_objects.signalEvent();
}

std::string PublisherCommands::complete(const Words& words) {
    const std::vector<char> payload = words.size() > 3 ? fromHex(words[3]) : std::vector<char>();
    return answer(
        overwrite(number<std::int32_t>(words, 1), number<std::int32_t>(words, 2), payload),
        "the buffer cannot be completed");
}

std::string PublisherCommands::completeChecked(const Words& words) {
    const auto tickCount = number<std::int32_t>(words, 2);
    std::vector<char> payload(
        static_cast<std::size_t>(field(offsetof(irsdk_header, bufferLength))));
    fillChecked(payload.data(), payload.size(), tickCount);
    return answer(overwrite(number<std::int32_t>(words, 1), tickCount, payload),
                  "the buffer cannot be completed");
}

std::string PublisherCommands::signal(const Words& /*words*/) {
    return answer(m_objects.signalEvent(), "no event");
}

bool PublisherCommands::writeText(const std::vector<char>& text, std::int32_t counter) {
    const std::int32_t offset = field(offsetof(irsdk_header, sessionInfoOffset));
    if (!fits(offset, text.size() + 1)) {
        return false;
    }
    std::copy(text.begin(), text.end(), m_objects.block() + offset);
    m_objects.block()[static_cast<std::size_t>(offset) + text.size()] = '\0';
    return setField(offsetof(irsdk_header, sessionInfoUpdate), counter);
}

std::string PublisherCommands::setSession(const Words& words) {
    return answer(writeText(fromHex(word(words, 2)), number<std::int32_t>(words, 1)),
                  "the text does not fit");
}

template <typename Round>
std::string PublisherCommands::startRounds(Round round) {
    if (m_writing) {
        return "error writing already";
    }
    m_rounds = 0;
    m_writing = true;
    m_writer = std::thread([this, round]() mutable {
        while (m_writing) {
            round();
            ++m_rounds;
        }
    });
    return kOk;
}

std::string PublisherCommands::writeAtFullSpeed(const Words& words) {
    return startWriting(number<std::int32_t>(words, 1), std::chrono::microseconds(0));
}

std::string PublisherCommands::writeWithPauses(const Words& words) {
    return startWriting(number<std::int32_t>(words, 2),
                        std::chrono::microseconds(number<int>(words, 1)));
}

std::int32_t PublisherCommands::newestTickCount(std::int32_t buffers) const {
    std::int32_t newest = 0;
    for (std::int32_t i = 0; i < buffers; ++i) {
        newest = std::max(newest, field(descriptorAt(i) + offsetof(irsdk_varBuf, tickCount)));
    }
    return newest;
}

std::string PublisherCommands::startWriting(std::int32_t buffers, std::chrono::microseconds pause) {
    const auto length = static_cast<std::size_t>(field(offsetof(irsdk_header, bufferLength)));
    if (buffers < 1) {
        return "error no buffers";
    }
    return startRounds([this, buffers, pause, tickCount = newestTickCount(buffers),
                        payload = std::vector<char>(length)]() mutable {
        ++tickCount;
        fillChecked(payload.data(), payload.size(), tickCount);
        overwrite(tickCount % buffers, tickCount, payload);
        if (pause.count() > 0) {
            std::this_thread::sleep_for(pause);
        }
    });
}

std::string PublisherCommands::bumpSessionCounter(const Words& /*words*/) {
    return startRounds([this, counter = std::uint32_t{0}]() mutable {
        ++counter;
        setField(offsetof(irsdk_header, sessionInfoUpdate), static_cast<std::int32_t>(counter));
    });
}

std::string PublisherCommands::flipByte(const Words& words) {
    const auto offset = number<std::int64_t>(words, 1);
    if (!fits(offset, 1)) {
        return "error outside the block";
    }
    return startRounds([byte = std::atomic_ref<char>(m_objects.block()[offset])] {
        // Many letters, so that two reads seldom see the same one.
        constexpr char kFirst = 'A';
        constexpr char kLast = 'Z';
        const char letter = byte.load();
        byte.store(letter >= kFirst && letter < kLast ? static_cast<char>(letter + 1) : kFirst);
    });
}

void PublisherCommands::stopWriter() {
    m_writing = false;
    if (m_writer.joinable()) {
        m_writer.join();
    }
}

std::string PublisherCommands::stop(const Words& /*words*/) {
    stopWriter();
    return kOk + ' ' + std::to_string(m_rounds);
}

std::string PublisherCommands::truncate(const Words& words) {
    return answer(m_objects.truncateBlock(number<std::size_t>(words, 1)),
                  "blocks keep their size here");
}

std::string PublisherCommands::truncateEvent(const Words& words) {
    return answer(m_objects.truncateEvent(number<std::size_t>(words, 1)),
                  "events cannot be cut off here");
}

std::string PublisherCommands::unlink(const Words& words) {
    if (word(words, 1) == "event") {
        m_objects.removeEvent();
    } else {
        m_objects.removeBlock();
    }
    return kOk;
}

std::string PublisherCommands::chown(const Words& words) {
    const auto user = number<unsigned int>(words, 1);
    const bool given =
        word(words, 2) == "event" ? m_objects.giveEventTo(user) : m_objects.giveBlockTo(user);
    return answer(given, "the owner cannot be changed here");
}

}  // namespace testsupport
