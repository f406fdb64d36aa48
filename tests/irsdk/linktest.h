#pragma once

#include "irsdk/clock.h"
#include "irsdk/irsdk.h"
#include "tests/support/publisher.h"
#include "tests/support/testblock.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <string>
#include <thread>
#include <vector>

/** Offset of a field of a buffer's descriptor in the block. */
inline std::size_t descriptorField(int buffer, std::size_t field) {
    return static_cast<std::size_t>(irsdk_varBufOffset(buffer)) + field;
}

inline std::size_t bufferOffsetField(int buffer) {
    return descriptorField(buffer, offsetof(irsdk_varBuf, bufferOffset));
}

/**
 * A closed link at the start and at the end of each case, and a block of three buffers to publish.
 */
class LinkFixture : public ::testing::Test {
protected:
    using Where = testsupport::Publisher::Where;

    explicit LinkFixture(Where where) : publisher(where) {
        block.addVariable("Speed", irsdk_float, 1, "m/s");
        block.addVariable("CarIdxLap", irsdk_int, 64);
        block.addVariable("Gear", irsdk_int);
        snapshot.resize(static_cast<std::size_t>(block.snapshotLength()));
    }

    void SetUp() override { irsdk_shutdown(); }

    void TearDown() override {
        irsdk_shutdown();
        irsdk::setCalendarClock(nullptr);
    }

    /** Opens the link and takes its starting point, which is tick 10 in buffer 0. */
    void openAtTick10() {
        publisher.publish(block);
        publisher.completeChecked(0, 10);
        ASSERT_TRUE(irsdk_startup());
        ASSERT_FALSE(irsdk_getNewData(snapshot.data()));
    }

    [[nodiscard]] bool takes() { return irsdk_getNewData(snapshot.data(), length()); }
    [[nodiscard]] int length() const { return static_cast<int>(snapshot.size()); }

    testsupport::Publisher publisher;
    testsupport::TestBlock block;
    std::vector<char> snapshot;
};

/** The same cases against a block of this process and against one of a second process. */
class LinkTest : public LinkFixture,
                 public ::testing::WithParamInterface<testsupport::Publisher::Where> {
protected:
    LinkTest() : LinkFixture(GetParam()) {}
};

/** Cases that need the second process. */
class LinkToOtherProcessTest : public LinkFixture {
protected:
    LinkToOtherProcessTest() : LinkFixture(Where::OtherProcess) {}
};

/** Cases that need to write the block while the link reads it. */
class LinkToOwnProcessTest : public LinkFixture {
protected:
    LinkToOwnProcessTest() : LinkFixture(Where::ThisProcess) {}

    [[nodiscard]] char* published() { return publisher.commands().objects().block(); }
};

/**
 * A ring of so many buffers that a look at all their counts takes as long as another thread needs
 * to do something meanwhile. The payload of the first and of the last one is the same.
 */
class LongLook : public LinkToOwnProcessTest {
protected:
    static constexpr int kLastBuffer = 1'000'000;

    /** Opens the link and takes its starting point, which is tick 10 in the first buffer. */
    void openAtTick10() {
        constexpr int kPayload = 16;
        const std::size_t payloadAt = descriptorField(kLastBuffer + 1, 0);
        publisher.command("empty " + std::to_string(payloadAt + kPayload));
        publisher.createEvent();
        publisher.poke(offsetof(irsdk_header, numBuf), kLastBuffer + 1);
        publisher.poke(offsetof(irsdk_header, bufferLength), kPayload);
        for (const int buffer : {0, kLastBuffer}) {
            publisher.poke(bufferOffsetField(buffer), static_cast<std::int32_t>(payloadAt));
        }
        publisher.setTick(0, 10);
        publisher.setStatus(irsdk_stConnected);
        ASSERT_TRUE(irsdk_startup());
        ASSERT_FALSE(irsdk_getNewData(nullptr));
    }

    /** Lets a look that has just begun go on for a part of its time. */
    static void passIntoTheLook() { std::this_thread::sleep_for(std::chrono::microseconds(20)); }
};

/**
 * Completes one tick after the other from another thread, with a pause before each, until it is
 * destroyed: a wait that a busy machine begins late meets a later one. The publisher is its own
 * meanwhile.
 */
class TicksToCome {
public:
    TicksToCome(testsupport::Publisher& publisher, int first)
        : m_writer([this, &publisher, first] {
              constexpr std::chrono::milliseconds kPause{100};
              constexpr int kBuffers = 3;
              for (int tick = first; !m_over; ++tick) {
                  std::this_thread::sleep_for(kPause);
                  publisher.completeChecked(tick % kBuffers, tick);
              }
          }) {}
    ~TicksToCome() {
        m_over = true;
        m_writer.join();
    }
    TicksToCome(const TicksToCome&) = delete;
    TicksToCome& operator=(const TicksToCome&) = delete;

private:
    std::atomic<bool> m_over{false};
    std::thread m_writer;
};

inline std::string whereName(const ::testing::TestParamInfo<testsupport::Publisher::Where>& where) {
    return where.param == testsupport::Publisher::Where::ThisProcess ? "ThisProcess"
                                                                     : "OtherProcess";
}

/** Runs a parametrised fixture in both places. */
#define RATAIP_IN_BOTH_PLACES(Fixture)                                                       \
    INSTANTIATE_TEST_SUITE_P(Published, Fixture,                                             \
                             ::testing::Values(testsupport::Publisher::Where::ThisProcess,   \
                                               testsupport::Publisher::Where::OtherProcess), \
                             whereName)
