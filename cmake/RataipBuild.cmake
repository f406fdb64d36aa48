# Common to all targets: the language version, the warnings, the output folders, and whether a Qt for
# the target platform was found.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
if(PROJECT_IS_TOP_LEVEL)
    set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
endif()
# A surrounding build may have chosen a folder for everything, which then takes precedence.
if(NOT CMAKE_RUNTIME_OUTPUT_DIRECTORY)
    set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")
endif()

include(RataipQt)

# Has the root of the include paths ("folder/header.h") and, where this project is built by itself, the
# warnings that are errors. A surrounding build chooses its own warnings, and its compiler may have
# others.
add_library(rataip_common INTERFACE)
target_include_directories(rataip_common INTERFACE "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>")
if(MSVC)
    target_compile_options(rataip_common INTERFACE /permissive- /utf-8)
endif()
if(PROJECT_IS_TOP_LEVEL AND MSVC)
    target_compile_options(rataip_common INTERFACE /W4 /WX)
elseif(PROJECT_IS_TOP_LEVEL)
    target_compile_options(rataip_common INTERFACE
        -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
endif()
if(WIN32)
    target_compile_definitions(rataip_common INTERFACE UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN)
endif()

# On Windows, programs without Qt are single files that can be copied anywhere.
if(MINGW AND NOT RATAIP_HAVE_QT)
    add_link_options(-static)
endif()

set(RATAIP_SANITIZER "" CACHE STRING "Sanitizers of this build, as -fsanitize takes them")
if(RATAIP_SANITIZER)
    add_compile_options(-fsanitize=${RATAIP_SANITIZER} -fno-omit-frame-pointer
        -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${RATAIP_SANITIZER})
endif()

option(RATAIP_COVERAGE "Build with line coverage" OFF)
if(RATAIP_COVERAGE)
    add_compile_options(--coverage -O0)
    add_link_options(--coverage)
endif()
