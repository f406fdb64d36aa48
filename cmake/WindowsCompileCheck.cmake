# Compiles for Windows what cannot be linked there for want of a Qt for Windows: every source that
# needs Qt, against the headers of the building machine's Qt. Of those, only what the configuration
# of that Qt decides differs from a Qt for Windows; the compiler's own macros choose the platform's
# side of everything else. The objects are of no other use.
find_program(RATAIP_HOST_QMAKE NAMES qmake6 DOC "Names the folders of the building machine's Qt")
if(NOT RATAIP_HOST_QMAKE)
    message(WARNING "No Qt 6 on the building machine: sources that need Qt are not compiled")
    return()
endif()

function(rataip_query_host_qt variable property)
    execute_process(COMMAND "${RATAIP_HOST_QMAKE}" -query ${property}
        OUTPUT_VARIABLE value OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    set(${variable} "${value}" PARENT_SCOPE)
endfunction()
rataip_query_host_qt(qt_version QT_VERSION)
rataip_query_host_qt(qt_headers QT_INSTALL_HEADERS)
rataip_query_host_qt(qt_libexec QT_HOST_LIBEXECS)
string(REGEX MATCH "^[0-9]+" QT_VERSION_MAJOR "${qt_version}")

set(folders sdk yaml reader plugin tools/host tools/laps tools/lapimage tools/monitor)
set(modules QtCore QtGui)
if(EXISTS "${qt_headers}/QtCharts")
    list(APPEND folders tools/viewer)
    list(APPEND modules QtWidgets QtOpenGL QtOpenGLWidgets QtCharts)
else()
    message(STATUS "No Qt Charts on the building machine: tools/viewer is not compiled")
endif()

set(sources)
foreach(folder IN LISTS folders)
    file(GLOB found CONFIGURE_DEPENDS "${CMAKE_SOURCE_DIR}/${folder}/*.cpp")
    list(APPEND sources ${found})
endforeach()
file(GLOB found CONFIGURE_DEPENDS "${CMAKE_SOURCE_DIR}/tests/plugin/*_win32.cpp")
list(APPEND sources ${found})
list(FILTER sources EXCLUDE REGEX "_linux\\.cpp$")

set(generated "${CMAKE_BINARY_DIR}/windows-compile-check")
configure_file(sdk/interfaceid.h.in "${generated}/sdk/interfaceid.h" @ONLY)

add_library(rataip_windows_compile_check OBJECT ${sources})
set_target_properties(rataip_windows_compile_check PROPERTIES
    AUTOMOC ON
    AUTOMOC_EXECUTABLE "${qt_libexec}/moc")
list(TRANSFORM modules PREPEND "${qt_headers}/")
target_include_directories(rataip_windows_compile_check PRIVATE "${generated}")
target_include_directories(rataip_windows_compile_check SYSTEM PRIVATE "${qt_headers}" ${modules})
target_compile_definitions(rataip_windows_compile_check PRIVATE
    QT_PLUGIN
    RATAIP_PLUGIN_FILE="rataip.dll"
    RATAIP_PLUGIN_VERSION="${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR}"
    RATAIP_VERSION="${PROJECT_VERSION}")
target_compile_options(rataip_windows_compile_check PRIVATE -O0 -g0)
target_link_libraries(rataip_windows_compile_check PRIVATE rataip_common)
