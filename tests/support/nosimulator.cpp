#include "tests/support/publishedobjects.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

/**
 * No simulator at the start of each case: a case before it, of this program or of another one, may
 * have killed its own.
 */
class NoSimulator : public ::testing::EmptyTestEventListener {
public:
    static bool startEveryCase() {
        auto listener = std::make_unique<NoSimulator>();
        // The list owns its listeners.
        ::testing::UnitTest::GetInstance()->listeners().Append(listener.release());
        return true;
    }

private:
    void OnTestStart(const ::testing::TestInfo& /*test*/) override {
        testsupport::PublishedObjects::removeLeftovers();
    }
};

const bool startsEveryCase = NoSimulator::startEveryCase();

}  // namespace
