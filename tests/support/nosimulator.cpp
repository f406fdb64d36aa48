#include "tools/publisher/namedobjects.h"

#include <gtest/gtest.h>

namespace {

/**
 * No simulator at the start of each case: a case before it, of this program or of another one, may
 * have killed its own.
 */
class NoSimulator : public ::testing::EmptyTestEventListener {
    void OnTestStart(const ::testing::TestInfo& /*test*/) override {
        publisher::NamedObjects::removeLeftovers();
    }
};

const bool startsEveryCase = [] {
    // The list owns its listeners.
    ::testing::UnitTest::GetInstance()->listeners().Append(new NoSimulator);
    return true;
}();

}  // namespace
