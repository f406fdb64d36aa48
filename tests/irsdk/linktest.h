#pragma once

#include "irsdk/clock.h"
#include "irsdk/irsdk.h"
#include "tests/support/publisher.h"
#include "tests/support/testblock.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

/** Offset of a field of a buffer's descriptor in the block. */
inline std::size_t descriptorField(int buffer, std::size_t field) {
    return offsetof(irsdk_header, varBuf) +
           static_cast<std::size_t>(buffer) * sizeof(irsdk_varBuf) + field;
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
