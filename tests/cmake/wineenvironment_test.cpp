#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <windows.h>

namespace {

std::string variable(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? "" : value;
}

// What a Qt program needs in the Wine folder of a build in order to start.

TEST(WineEnvironment, FindsTheLibrariesOfTheCompiler) {
    for (const wchar_t* library :
         {L"libstdc++-6.dll", L"libgcc_s_seh-1.dll", L"libwinpthread-1.dll"}) {
        EXPECT_NE(LoadLibraryW(library), nullptr) << std::filesystem::path(library);
    }
}

TEST(WineEnvironment, LetsQtDrawWithoutAScreen) {
    EXPECT_EQ(variable("QT_QPA_PLATFORM"), "offscreen");
    const std::filesystem::path font =
        std::filesystem::path(variable("QT_QPA_FONTDIR")) / "DejaVuSans.ttf";
    EXPECT_TRUE(std::filesystem::exists(font)) << font;
}

}  // namespace
