#include "tests/support/applicationenvironment.h"

#include <QApplication>

namespace {

// For widgets.
const ::testing::Environment* const environment =
    ::testing::AddGlobalTestEnvironment(new OffscreenEnvironment<QApplication>);

}  // namespace
