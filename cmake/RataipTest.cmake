# In seconds. Only a hang takes this long, even with sanitizers on a busy machine.
set(RATAIP_TEST_TIMEOUT 600)
# The same for listing the cases of a program, which runs none of them.
set(RATAIP_DISCOVERY_TIMEOUT 120)

# rataip_add_test(NAME <target> SOURCES <file>... [LIBS <target>...] [SIMULATOR])
#
# A GoogleTest program whose test cases appear in CTest one by one, named "<target>/<Suite>.<Case>".
# SIMULATOR marks a program that publishes or opens the simulator's named objects. Their names are fixed
# for the whole machine, so such cases never run in parallel, and each starts without the objects.
function(rataip_add_test)
    cmake_parse_arguments(ARG "SIMULATOR" "NAME" "SOURCES;LIBS" ${ARGN})
    add_executable(${ARG_NAME} ${ARG_SOURCES})
    target_link_libraries(${ARG_NAME} PRIVATE rataip_common ${ARG_LIBS} GTest::gtest_main)
    set(properties TIMEOUT ${RATAIP_TEST_TIMEOUT})
    if(ARG_SIMULATOR)
        target_sources(${ARG_NAME} PRIVATE "${PROJECT_SOURCE_DIR}/tests/support/nosimulator.cpp")
        target_link_libraries(${ARG_NAME} PRIVATE rataip_test_support)
        list(APPEND properties RESOURCE_LOCK simulator-objects)
    endif()
    rataip_add_cases(${ARG_NAME} PREFIX "${ARG_NAME}/" SOURCES ${ARG_SOURCES}
        PROPERTIES ${properties})
    if(RATAIP_WINE)
        rataip_add_wine_case_check(${ARG_NAME} ${ARG_SOURCES})
    endif()
endfunction()

# rataip_add_cases(<target> PREFIX <text> SOURCES <file>... [FILTER <cases>]
#     PROPERTIES <property> <value>...)
#
# Registers the test cases of a program from these sources, or those that match the filter, under the
# prefix.
function(rataip_add_cases target)
    cmake_parse_arguments(PARSE_ARGV 1 ARG "" "PREFIX;FILTER" "SOURCES;PROPERTIES")
    if(RATAIP_WINE)
        rataip_add_wine_cases(${target} PREFIX "${ARG_PREFIX}" SOURCES ${ARG_SOURCES}
            PROPERTIES ${ARG_PROPERTIES})
    else()
        gtest_discover_tests(${target} TEST_PREFIX "${ARG_PREFIX}" TEST_FILTER "${ARG_FILTER}"
            DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT ${RATAIP_DISCOVERY_TIMEOUT}
            PROPERTIES ${ARG_PROPERTIES})
    endif()
endfunction()

# A cross build for Windows runs its programs with Wine, in a folder of the build. Without Wine all tests
# are reported as skipped.
set(RATAIP_WINE OFF)
if(WIN32 AND CMAKE_CROSSCOMPILING AND NOT CMAKE_CROSSCOMPILING_EMULATOR)
    set(RATAIP_WINE ON)
    set(CMAKE_CROSSCOMPILING_EMULATOR
        "${PROJECT_SOURCE_DIR}/scripts/wine.sh" "${PROJECT_BINARY_DIR}/wine")
    set(RATAIP_WINE_SKIPPED 77)  # exit status of wine.sh where there is no Wine
endif()

# Creates the Wine folder before the first test that needs it, and ends its processes after the last.
function(rataip_add_wine_fixture)
    add_test(NAME wine-start COMMAND ${CMAKE_CROSSCOMPILING_EMULATOR} start)
    set_tests_properties(wine-start PROPERTIES
        FIXTURES_SETUP wine SKIP_RETURN_CODE ${RATAIP_WINE_SKIPPED} TIMEOUT 300)
    add_test(NAME wine-stop COMMAND ${CMAKE_CROSSCOMPILING_EMULATOR} stop)
    set_tests_properties(wine-stop PROPERTIES
        FIXTURES_CLEANUP wine SKIP_RETURN_CODE ${RATAIP_WINE_SKIPPED} TIMEOUT 60)
endfunction()

# Qt programs find Qt's and the compiler's libraries by the path. They draw without a screen, for which
# they need a font. Wine does not pass on variables that begin with "QT_", so all of them go into the
# registry of the Wine folder; wine.sh enters the contents of this file.
function(rataip_write_wine_environment)
    set(folders)
    if(RATAIP_HAVE_QT)
        set(folders "Z:$<TARGET_FILE_DIR:Qt6::Core>")
    endif()
    foreach(library IN ITEMS libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
        execute_process(COMMAND "${CMAKE_CXX_COMPILER}" -print-file-name=${library}
            OUTPUT_VARIABLE file OUTPUT_STRIP_TRAILING_WHITESPACE)
        # The compiler returns a bare name when it has no such file.
        if(IS_ABSOLUTE "${file}")
            cmake_path(NORMAL_PATH file)
            cmake_path(GET file PARENT_PATH folder)
            list(APPEND folders "Z:${folder}")
        endif()
    endforeach()
    list(REMOVE_DUPLICATES folders)

    find_path(RATAIP_FONT_FOLDER DejaVuSans.ttf PATHS /usr/share/fonts
        PATH_SUFFIXES truetype/dejavu TTF dejavu dejavu-sans-fonts
        NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH
        DOC "Folder of the fonts with which Windows programs draw in Wine")
    if(RATAIP_HAVE_QT AND NOT RATAIP_FONT_FOLDER)
        message(WARNING "No DejaVu fonts: texts of Windows programs stay empty in Wine. Set "
            "RATAIP_FONT_FOLDER to a folder of TrueType fonts.")
    endif()

    file(GENERATE OUTPUT "${CMAKE_BINARY_DIR}/wine/environment.reg" CONTENT
"REGEDIT4

[HKEY_CURRENT_USER\\Environment]
\"PATH\"=\"${folders}\"
\"QT_QPA_PLATFORM\"=\"offscreen\"
\"QT_QPA_FONTDIR\"=\"Z:${RATAIP_FONT_FOLDER}\"
")
endfunction()

# rataip_list_cases(<variable> <file>...): the test cases in sources as "Suite.Case".
function(rataip_list_cases variable)
    set(name "[ \n]*([A-Za-z0-9_]+)[ \n]*")
    set(cases)
    foreach(source IN LISTS ARGN)
        # By one name even when several folders list it, because Ninja treats two names as two files.
        cmake_path(ABSOLUTE_PATH source BASE_DIRECTORY "${CMAKE_CURRENT_SOURCE_DIR}" NORMALIZE)
        set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${source}")
        file(READ "${source}" text)
        string(REGEX MATCHALL "\nTEST(_F|_P)?\\(${name},${name}\\)" macros "${text}")
        foreach(macro IN LISTS macros)
            string(REGEX REPLACE "\nTEST(_F|_P)?\\(${name},${name}\\)" "\\2.\\3" case "${macro}")
            list(APPEND cases "${case}")
        endforeach()
    endforeach()
    set(${variable} "${cases}" PARENT_SCOPE)
endfunction()

# rataip_add_wine_cases(<target> PREFIX <text> SOURCES <file>... PROPERTIES <property> <value>...)
#
# Takes the names of the cases from the sources, because the program cannot run without Wine. A case
# with parameters is one test that runs it with all of them.
function(rataip_add_wine_cases target)
    cmake_parse_arguments(PARSE_ARGV 1 ARG "" "PREFIX" "SOURCES;PROPERTIES")
    rataip_list_cases(cases ${ARG_SOURCES})
    set(tests)
    foreach(case IN LISTS cases)
        add_test(NAME "${ARG_PREFIX}${case}"
            COMMAND ${target} "--gtest_filter=${case}:*/${case}/*")
        list(APPEND tests "${ARG_PREFIX}${case}")
    endforeach()
    set_tests_properties(${tests} PROPERTIES ${ARG_PROPERTIES}
        # GoogleTest succeeds when a filter matches no case.
        FAIL_REGULAR_EXPRESSION "Running 0 tests"
        FIXTURES_REQUIRED wine SKIP_RETURN_CODE ${RATAIP_WINE_SKIPPED})
endfunction()

# rataip_add_wine_case_check(<target> <file>...): adds the test "<target>/lists-its-cases", which compares
# the names from the sources with those of the program.
function(rataip_add_wine_case_check target)
    rataip_list_cases(cases ${ARGN})
    string(REPLACE ";" "," names "${cases}")
    add_test(NAME "${target}/lists-its-cases"
        COMMAND "${CMAKE_COMMAND}" "-DEMULATOR=${CMAKE_CROSSCOMPILING_EMULATOR}"
            "-DPROGRAM=$<TARGET_FILE:${target}>" "-DCASES=${names}"
            -P "${PROJECT_SOURCE_DIR}/cmake/CheckListedCases.cmake")
    set_tests_properties("${target}/lists-its-cases" PROPERTIES
        SKIP_REGULAR_EXPRESSION "no Wine on this machine" FIXTURES_REQUIRED wine
        TIMEOUT ${RATAIP_DISCOVERY_TIMEOUT})
endfunction()
