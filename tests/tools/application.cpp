#include <QCoreApplication>

#include <gtest/gtest.h>

#include <memory>

namespace {

/** Timers, event loops and processes of Qt's need an application object around the tests. */
class ApplicationEnvironment : public ::testing::Environment {
public:
    void SetUp() override { m_application = std::make_unique<QCoreApplication>(m_argc, m_argv); }
    void TearDown() override { m_application.reset(); }

private:
    char m_name[5] = "test";
    char* m_argv[2] = {m_name, nullptr};
    int m_argc = 1;
    std::unique_ptr<QCoreApplication> m_application;
};

const ::testing::Environment* const environment =
    ::testing::AddGlobalTestEnvironment(new ApplicationEnvironment);

}  // namespace
