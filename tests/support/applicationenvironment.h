#pragma once

#include <QByteArray>

#include <gtest/gtest.h>

#include <memory>

/** Qt's application object around all tests of a program. */
template <typename Application>
class ApplicationEnvironment : public ::testing::Environment {
public:
    void SetUp() override { m_application = std::make_unique<Application>(m_argc, m_argv); }
    void TearDown() override { m_application.reset(); }

private:
    char m_name[5] = "test";
    char* m_argv[2] = {m_name, nullptr};
    int m_argc = 1;
    std::unique_ptr<Application> m_application;
};

/** The same without a screen, at the scale factor in RATAIP_TEST_SCALE. */
template <typename Application>
class OffscreenEnvironment : public ApplicationEnvironment<Application> {
public:
    void SetUp() override {
        qputenv("QT_QPA_PLATFORM", QByteArrayLiteral("offscreen"));
        // Not in Qt's own variable, which does not reach a Windows program in Wine.
        if (qEnvironmentVariableIsSet("RATAIP_TEST_SCALE")) {
            qputenv("QT_SCALE_FACTOR", qgetenv("RATAIP_TEST_SCALE"));
        }
        ApplicationEnvironment<Application>::SetUp();
    }
};
