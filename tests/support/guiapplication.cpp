#include "tests/support/applicationenvironment.h"

#include <QGuiApplication>

namespace {

// For fonts and pictures.
const ::testing::Environment* const kEnvironment =
    ::testing::AddGlobalTestEnvironment(new OffscreenEnvironment<QGuiApplication>);

}  // namespace
