#include "irsdk/irsdk.h"
#include "plugin/irpluginlive.h"
#include "sdk/lap.h"
#include "tests/fuzz/blockscript.h"
#include "tests/fuzz/fuzztarget.h"
#include "tests/fuzz/privateobjects_linux.h"
#include "tests/fuzz/quietqt.h"
#include "tests/support/publishedobjects.h"

#include <QCoreApplication>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstring>
#include <limits>
#include <memory>
#include <thread>

#if defined(__SANITIZE_ADDRESS__)
#define RATAIP_POISONS 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define RATAIP_POISONS 1
#endif
#endif
#ifdef RATAIP_POISONS
#include <sanitizer/asan_interface.h>
#endif

// The input is a whole block, published in shared memory and read by a plugin that connects and
// ticks. What happens between the ticks is said by the block's reserved words, which no reader
// looks at; see blockscript.h.

namespace {

using fuzz::require;
using testsupport::PublishedObjects;

constexpr std::size_t kLargestBlock = std::size_t{64} * 1024;
constexpr qsizetype kSlots = 64;

/**
 * Moves the event all the time, so that a wait for data that never come costs microseconds instead
 * of the plugin's patience. What a wait finds does not depend on it.
 */
class Waker {
public:
    Waker() {
        fuzz::require(m_objects.createEvent(), "the event can be created");
        m_thread = std::jthread([this](const std::stop_token& stop) {
            constexpr std::chrono::microseconds kPause(20);
            while (!stop.stop_requested()) {
                m_objects.signalEvent();
                std::this_thread::sleep_for(kPause);
            }
        });
    }

private:
    PublishedObjects m_objects;
    std::jthread m_thread;
};

/** The rest of the block's last page can be read without a fault, but it is not the block's. */
class PageRest {
public:
    void poison([[maybe_unused]] std::size_t blockSize) {
#ifdef RATAIP_POISONS
        constexpr std::size_t kPage = 4096;
        if (const auto* block = reinterpret_cast<const char*>(irsdk_getHeader())) {
            m_from = block + blockSize;
            m_length = (kPage - blockSize % kPage) % kPage;
            __asan_poison_memory_region(m_from, m_length);
        }
#endif
    }

    /** To be called as soon as the block is no longer mapped. */
    void release() {
#ifdef RATAIP_POISONS
        __asan_unpoison_memory_region(m_from, m_length);
        m_length = 0;
#endif
    }

private:
    const char* m_from = nullptr;
    std::size_t m_length = 0;
};

/** The block as its publisher sees it, who may do with it what he likes. */
class HostileBlock {
public:
    HostileBlock(const std::uint8_t* data, std::size_t size) : m_size(size) {
        require(m_objects.createBlock(size), "the block can be created");
        if (size > 0) {
            std::memcpy(m_objects.block(), data, size);
        }
    }

    [[nodiscard]] std::size_t size() const { return m_size; }

    [[nodiscard]] std::int32_t word(std::size_t offset) const {
        std::int32_t value = 0;
        if (holds(offset)) {
            std::memcpy(&value, m_objects.block() + offset, sizeof value);
        }
        return value;
    }

    void setWord(std::size_t offset, std::int32_t value) {
        if (holds(offset)) {
            std::memcpy(m_objects.block() + offset, &value, sizeof value);
        }
    }

    void addToWord(std::size_t offset, std::uint32_t step) {
        setWord(offset, static_cast<std::int32_t>(static_cast<std::uint32_t>(word(offset)) + step));
    }

    /** Changes the word at `offset` of every buffer of the ring. */
    template <typename Change>
    void changeWordOfSnapshots(std::size_t offset, Change change) {
        for (std::size_t i = 0; i < bufferCount(); ++i) {
            const auto start = static_cast<std::uint32_t>(
                word(descriptor(i) + offsetof(irsdk_varBuf, bufferOffset)));
            const std::size_t at = std::size_t{start} + offset;
            setWord(at, change(word(at)));
        }
    }

    void completeNext() {
        std::size_t newest = 0;
        for (std::size_t i = 1; i < bufferCount(); ++i) {
            newest = word(descriptor(i)) > word(descriptor(newest)) ? i : newest;
        }
        addToWord(descriptor(newest), 1);
    }

    void setTicks(std::int32_t tick) {
        for (std::size_t i = 0; i < bufferCount(); ++i) {
            setWord(descriptor(i), tick);
        }
    }

    void cutTo(std::size_t size) { m_objects.truncateBlock(size); }

private:
    [[nodiscard]] bool holds(std::size_t offset) const {
        const std::size_t size = m_objects.blockSize();
        return offset <= size && size - offset >= sizeof(std::int32_t);
    }

    static std::size_t descriptor(std::size_t index) {
        return static_cast<std::size_t>(irsdk_varBufOffset(static_cast<std::int64_t>(index)));
    }

    [[nodiscard]] std::size_t bufferCount() const {
        constexpr std::int32_t kMost = 8;
        return static_cast<std::size_t>(std::clamp(word(offsetof(irsdk_header, numBuf)), 1, kMost));
    }

    PublishedObjects m_objects;
    std::size_t m_size;
};

/** A plugin with a host that looks at what it gets, over a block that changes between ticks. */
class Run {
public:
    Run(const std::uint8_t* data, std::size_t size) : m_block(data, size) {
        const auto* emitter = m_plugin.dataEmitter();
        using TLM::SDK::DataEmitter;
        QObject::connect(emitter, &DataEmitter::sendSamples,
                         [this](const QList<TLM::SDK::Sample>& samples) {
                             require(m_plugin.isConnected(), "samples come while connected");
                             require(samples.size() == kSlots, "a sample comes for every slot");
                         });
        QObject::connect(emitter, &DataEmitter::sendTelemetryLap,
                         [this](const QSharedPointer<TLM::SDK::Lap>& lap) {
                             require(m_plugin.isConnected(), "laps come while connected");
                             require(!lap.isNull(), "a lap that is handed over is one");
                         });
        QObject::connect(emitter, &DataEmitter::sendDisconnected, [this] { m_pageRest.release(); });
    }

    ~Run() {
        m_plugin.disconnectFromSource();
        irsdk_shutdown();
        m_pageRest.release();
    }
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;

    void play() {
        m_plugin.initialize();
        std::array<std::uint8_t, fuzz::kScriptLength> script{};
        for (std::size_t i = 0; i < script.size(); ++i) {
            const std::size_t word = fuzz::kScriptOffset + i / 4 * 4;
            script[i] = static_cast<std::uint8_t>(static_cast<std::uint32_t>(m_block.word(word)) >>
                                                  8U * (i % 4));
        }
        connect();
        for (const std::uint8_t step : script) {
            act(static_cast<fuzz::BlockAction>(step % fuzz::kBlockActions),
                step / fuzz::kBlockActions);
            tick();
        }
    }

private:
    /** The link's first look notes where the simulator stands; the tick after it is a new one. */
    void connect() {
        if (irsdk_startup()) {
            irsdk_getNewData(nullptr);
        }
        m_block.completeNext();
        m_plugin.connectToSource();
        if (m_plugin.isConnected()) {
            m_pageRest.poison(m_block.size());
        }
    }

    void tick() {
        m_block.changeWordOfSnapshots(fuzz::kSessionTickOffset,
                                      [](std::int32_t tick) { return next(tick); });
        m_block.completeNext();
        m_plugin.tick();
    }

    void act(fuzz::BlockAction action, int argument) {
        using fuzz::BlockAction;
        const auto number = static_cast<std::size_t>(argument);
        switch (action) {
            case BlockAction::Nothing:
                break;
            case BlockAction::MoveSessionCounter:
                m_block.addToWord(offsetof(irsdk_header, sessionInfoUpdate), 1);
                break;
            case BlockAction::StopAndStart:
                m_block.setWord(offsetof(irsdk_header, status), 0);
                m_plugin.tick();
                m_block.setWord(offsetof(irsdk_header, status), irsdk_stConnected);
                m_plugin.tick();
                break;
            case BlockAction::CutOff:
                m_block.cutTo(m_block.size() * number / fuzz::kArguments);
                m_plugin.tick();
                m_block.cutTo(m_block.size());
                break;
            case BlockAction::ChangeHeader:
                m_block.setWord(number % (sizeof(irsdk_header) / 4) * 4, hostileNumber(argument));
                break;
            case BlockAction::ChangeReading:
                m_block.changeWordOfSnapshots(number * 4, [argument](std::int32_t reading) {
                    return argument % 2 == 0 ? next(reading) : hostileNumber(argument / 2);
                });
                break;
            case BlockAction::Reconnect:
                m_plugin.disconnectFromSource();
                m_plugin.checkConnectionAvailability();
                connect();
                break;
            case BlockAction::JumpBack:
                m_block.setTicks(argument - fuzz::kArguments / 2);
                m_plugin.tick();
                break;
        }
    }

    /** After the largest number comes the smallest. */
    static std::int32_t next(std::int32_t number) {
        return static_cast<std::int32_t>(static_cast<std::uint32_t>(number) + 1U);
    }

    static std::int32_t hostileNumber(int argument) {
        constexpr std::array<std::int32_t, 8> kNumbers{0,
                                                       1,
                                                       -1,
                                                       std::numeric_limits<std::int32_t>::max(),
                                                       0x7FC00000,  // NaN
                                                       std::numeric_limits<std::int32_t>::min(),
                                                       0x7F800000,  // infinity
                                                       4096};
        return kNumbers[static_cast<std::size_t>(argument) % kNumbers.size()];
    }

    HostileBlock m_block;
    PageRest m_pageRest;
    iRPluginLive m_plugin;
};

}  // namespace

int LLVMFuzzerInitialize(int* argc, char*** argv) {
    fuzz::silenceQt();
    if (!fuzz::takePrivateObjects()) {
        std::fputs("No private shared memory: no simulator may publish meanwhile.\n", stderr);
    }
    // Both live until the process ends.
    static QCoreApplication application(*argc, *argv);
    static Waker waker;
    return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size <= kLargestBlock) {
        Run(data, size).play();
    }
    return 0;
}
