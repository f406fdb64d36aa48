#include "tests/support/applicationenvironment.h"

#include <QCoreApplication>

namespace {

// For timers, event loops and processes of Qt.
const ::testing::Environment* const kEnvironment =
    ::testing::AddGlobalTestEnvironment(new ApplicationEnvironment<QCoreApplication>);

}  // namespace
