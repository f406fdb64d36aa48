#include <QGuiApplication>

#include <gtest/gtest.h>

#include <memory>

namespace {

/** Fonts need an application object; no screen does. */
class GuiApplicationEnvironment : public ::testing::Environment {
public:
    void SetUp() override {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        m_application = std::make_unique<QGuiApplication>(m_argc, m_argv);
    }
    void TearDown() override { m_application.reset(); }

private:
    char m_name[5] = "test";
    char* m_argv[2] = {m_name, nullptr};
    int m_argc = 1;
    std::unique_ptr<QGuiApplication> m_application;
};

const ::testing::Environment* const environment =
    ::testing::AddGlobalTestEnvironment(new GuiApplicationEnvironment);

}  // namespace
