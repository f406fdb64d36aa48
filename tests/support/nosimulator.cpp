#include "tools/publisher/namedobjects.h"

#include <gtest/gtest.h>

namespace {

/**
 * Removes what a simulator has left, before each test: an earlier test of this or another program
 * may have killed its simulator.
 */
class NoSimulator : public ::testing::EmptyTestEventListener {
    void OnTestStart(const ::testing::TestInfo& /*test*/) override {
        publisher::NamedObjects::removeLeftovers();
    }
};

const bool kStartsEveryCase = [] {
    // The list owns its listeners.
    ::testing::UnitTest::GetInstance()->listeners().Append(new NoSimulator);
    return true;
}();

}  // namespace
