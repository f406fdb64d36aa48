#include "irsdk/irsdk.h"
#include "tests/support/openobjects.h"
#include "tests/support/publisher.h"

#include <gtest/gtest.h>

namespace {

using testsupport::OpenObjects;
using testsupport::Publisher;

// What is left open would show as a simulator that never quite goes away.
TEST(LinkObjects, AreAllClosedByAShutdown) {
    Publisher publisher(Publisher::Where::OtherProcess);
    testsupport::TestBlock block;
    publisher.publish(block);
    static_cast<void>(irsdk_startup());  // what the first use leaves open stays open
    irsdk_shutdown();
    const OpenObjects before = OpenObjects::now();

    ASSERT_TRUE(irsdk_startup());
    const OpenObjects open = OpenObjects::now();
    irsdk_shutdown();

    EXPECT_GT(open.simulatorMaps, before.simulatorMaps);
    EXPECT_GT(open.handles, before.handles);
    EXPECT_EQ(OpenObjects::now(), before);
}

TEST(LinkObjects, OfAHalfOpenLinkAreClosedByAShutdown) {
    Publisher publisher(Publisher::Where::OtherProcess);
    testsupport::TestBlock block;
    publisher.publishBlock(block);
    static_cast<void>(irsdk_startup());
    irsdk_shutdown();
    const OpenObjects before = OpenObjects::now();

    ASSERT_FALSE(irsdk_startup());
    EXPECT_NE(OpenObjects::now(), before);
    irsdk_shutdown();

    EXPECT_EQ(OpenObjects::now(), before);
}

}  // namespace
