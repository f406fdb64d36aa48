# Compiles the sources that need Qt for Windows without a Qt for Windows, against the headers of the
# build machine's Qt. These differ from a Qt for Windows only in what the configuration of that Qt
# decides; for everything else the compiler's macros select the platform. The plugin is also linked, to
# import libraries with the names that it needs from Qt, so that its imports and exports can be checked.
# It cannot be loaded.
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

set(check_folder "${PROJECT_BINARY_DIR}/windows-compile-check")
configure_file(sdk/interfaceid.h.in "${check_folder}/sdk/interfaceid.h" @ONLY)

# rataip_add_compile_check(<name> MODULES <Qt module>... FOLDERS <folder>...)
function(rataip_add_compile_check name)
    cmake_parse_arguments(ARG "" "" "MODULES;FOLDERS" ${ARGN})
    set(sources)
    foreach(folder IN LISTS ARG_FOLDERS)
        file(GLOB found CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/${folder}/*.cpp")
        list(APPEND sources ${found})
    endforeach()
    list(FILTER sources EXCLUDE REGEX "_linux\\.cpp$")

    add_library(${name} OBJECT ${sources})
    set_target_properties(${name} PROPERTIES
        AUTOMOC ON
        AUTOMOC_EXECUTABLE "${qt_libexec}/moc")
    list(TRANSFORM ARG_MODULES PREPEND "${qt_headers}/")
    target_include_directories(${name} PRIVATE "${check_folder}")
    target_include_directories(${name} SYSTEM PRIVATE "${qt_headers}" ${ARG_MODULES})
    target_compile_definitions(${name} PRIVATE
        RATAIP_PLUGIN_FILE="rataip.dll"
        RATAIP_PLUGIN_VERSION="${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR}"
        RATAIP_VERSION="${PROJECT_VERSION}")
    target_compile_options(${name} PRIVATE -O0 -g0)
    target_link_libraries(${name} PRIVATE rataip_common)
endfunction()

rataip_add_compile_check(rataip_windows_plugin_check
    MODULES QtCore QtGui
    FOLDERS sdk yaml reader plugin)
target_compile_definitions(rataip_windows_plugin_check PRIVATE QT_PLUGIN)

set(folders tools/host tools/laps tools/lapimage tools/monitor)
set(modules QtCore QtGui)
if(EXISTS "${qt_headers}/QtCharts")
    list(APPEND folders tools/viewer)
    list(APPEND modules QtWidgets QtOpenGL QtOpenGLWidgets QtCharts)
else()
    message(STATUS "No Qt Charts on the building machine: tools/viewer is not compiled")
endif()
rataip_add_compile_check(rataip_windows_programs_check MODULES ${modules} FOLDERS ${folders})

set(RATAIP_TABLES_ONLY_PLUGIN "${check_folder}/rataip.dll")
add_custom_command(OUTPUT "${RATAIP_TABLES_ONLY_PLUGIN}"
    COMMAND "${CMAKE_COMMAND}"
        "-DNM=${CMAKE_NM}" "-DDLLTOOL=${CMAKE_DLLTOOL}" "-DCXX=${CMAKE_CXX_COMPILER}"
        "-DOBJECTS=$<TARGET_OBJECTS:rataip_windows_plugin_check>"
        "-DLIBRARIES=$<TARGET_FILE:rataip_irsdk>"
        "-DOUTPUT=${RATAIP_TABLES_ONLY_PLUGIN}"
        -P "${PROJECT_SOURCE_DIR}/cmake/LinkToNames.cmake"
    DEPENDS $<TARGET_OBJECTS:rataip_windows_plugin_check> rataip_windows_plugin_check rataip_irsdk
        cmake/LinkToNames.cmake
    COMMENT "Linking rataip.dll to the names of Qt"
    VERBATIM)
add_custom_target(rataip_windows_link_check ALL DEPENDS "${RATAIP_TABLES_ONLY_PLUGIN}")
