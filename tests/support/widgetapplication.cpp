#include "tests/support/applicationenvironment.h"

#include <QApplication>

namespace {

// For widgets.
const ::testing::Environment* const kEnvironment =
    ::testing::AddGlobalTestEnvironment(new OffscreenEnvironment<QApplication>);

}  // namespace
