# Seconds. Only a hang takes this long, also with sanitizers on a busy machine.
set(RATAIP_TEST_TIMEOUT 600)
# The same for a program that is to list its cases, which starts it and runs none.
set(RATAIP_DISCOVERY_TIMEOUT 120)

# rataip_add_test(NAME <target> SOURCES <file>... [LIBS <target>...] [SIMULATOR])
#
# A GoogleTest program whose test cases appear in CTest one by one, named "<target>/<Suite>.<Case>".
# SIMULATOR marks a program that publishes or opens the simulator's named objects: their names are
# fixed for the whole machine, so such cases never run side by side, and each begins without them.
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
    if(RATAIP_WINE)
        rataip_add_wine_cases(${ARG_NAME} SOURCES ${ARG_SOURCES} PROPERTIES ${properties})
    else()
        gtest_discover_tests(${ARG_NAME} TEST_PREFIX "${ARG_NAME}/" DISCOVERY_MODE PRE_TEST
            DISCOVERY_TIMEOUT ${RATAIP_DISCOVERY_TIMEOUT} PROPERTIES ${properties})
    endif()
endfunction()

# A cross build for Windows runs its programs with Wine, in a folder of the build. Without Wine every
# test is reported as skipped.
set(RATAIP_WINE OFF)
if(WIN32 AND CMAKE_CROSSCOMPILING AND NOT CMAKE_CROSSCOMPILING_EMULATOR)
    set(RATAIP_WINE ON)
    set(CMAKE_CROSSCOMPILING_EMULATOR
        "${PROJECT_SOURCE_DIR}/scripts/wine.sh" "${PROJECT_BINARY_DIR}/wine")
    set(RATAIP_WINE_SKIPPED 77)  # exit status of wine.sh where there is no Wine
endif()

# The Wine folder is made before the first test that needs it, and nothing runs in it after the last.
function(rataip_add_wine_fixture)
    add_test(NAME wine-start COMMAND ${CMAKE_CROSSCOMPILING_EMULATOR} start)
    set_tests_properties(wine-start PROPERTIES
        FIXTURES_SETUP wine SKIP_RETURN_CODE ${RATAIP_WINE_SKIPPED} TIMEOUT 300)
    add_test(NAME wine-stop COMMAND ${CMAKE_CROSSCOMPILING_EMULATOR} stop)
    set_tests_properties(wine-stop PROPERTIES
        FIXTURES_CLEANUP wine SKIP_RETURN_CODE ${RATAIP_WINE_SKIPPED} TIMEOUT 60)
endfunction()

# rataip_list_cases(<variable> <file>...): the test cases of sources as "Suite.Case".
function(rataip_list_cases variable)
    set(name "[ \n]*([A-Za-z0-9_]+)[ \n]*")
    set(cases)
    foreach(source IN LISTS ARGN)
        cmake_path(ABSOLUTE_PATH source BASE_DIRECTORY "${CMAKE_CURRENT_SOURCE_DIR}")
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

# rataip_add_wine_cases(<target> SOURCES <file>... PROPERTIES <property> <value>...)
#
# The cases' names come from the sources, since the program cannot be asked where there is no Wine. A
# case with parameters is one test that runs it with each of them. The test "<target>/lists-its-cases"
# holds the names to those of the program.
function(rataip_add_wine_cases target)
    cmake_parse_arguments(PARSE_ARGV 1 ARG "" "" "SOURCES;PROPERTIES")
    rataip_list_cases(cases ${ARG_SOURCES})
    set(tests)
    foreach(case IN LISTS cases)
        add_test(NAME "${target}/${case}"
            COMMAND ${target} "--gtest_filter=${case}:*/${case}/*")
        list(APPEND tests "${target}/${case}")
    endforeach()
    set_tests_properties(${tests} PROPERTIES ${ARG_PROPERTIES}
        # A filter that fits no case is a success to GoogleTest.
        FAIL_REGULAR_EXPRESSION "Running 0 tests"
        FIXTURES_REQUIRED wine SKIP_RETURN_CODE ${RATAIP_WINE_SKIPPED})

    string(REPLACE ";" "," names "${cases}")
    add_test(NAME "${target}/lists-its-cases"
        COMMAND "${CMAKE_COMMAND}" "-DEMULATOR=${CMAKE_CROSSCOMPILING_EMULATOR}"
            "-DPROGRAM=$<TARGET_FILE:${target}>" "-DCASES=${names}"
            -P "${PROJECT_SOURCE_DIR}/cmake/CheckListedCases.cmake")
    set_tests_properties("${target}/lists-its-cases" PROPERTIES
        SKIP_REGULAR_EXPRESSION "no Wine on this machine" FIXTURES_REQUIRED wine
        TIMEOUT ${RATAIP_DISCOVERY_TIMEOUT})
endfunction()
