#include <QApplication>

#include <gtest/gtest.h>

#include <memory>

namespace {

/** Widgets need an application object; no screen does. */
class ApplicationEnvironment : public ::testing::Environment {
public:
    void SetUp() override {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        m_application = std::make_unique<QApplication>(m_argc, m_argv);
    }
    void TearDown() override { m_application.reset(); }

private:
    char m_name[5] = "test";
    char* m_argv[2] = {m_name, nullptr};
    int m_argc = 1;
    std::unique_ptr<QApplication> m_application;
};

const ::testing::Environment* const environment =
    ::testing::AddGlobalTestEnvironment(new ApplicationEnvironment);

}  // namespace
