# rataip_add_test(NAME <target> SOURCES <file>... [LIBS <target>...] [SIMULATOR])
#
# A GoogleTest program whose test cases appear in CTest one by one, named "<target>/<Suite>.<Case>".
# SIMULATOR marks a program that publishes or opens the simulator's named objects: their names are
# fixed for the whole machine, so such cases never run side by side.
function(rataip_add_test)
    cmake_parse_arguments(ARG "SIMULATOR" "NAME" "SOURCES;LIBS" ${ARGN})
    add_executable(${ARG_NAME} ${ARG_SOURCES})
    target_link_libraries(${ARG_NAME} PRIVATE rataip_common ${ARG_LIBS} GTest::gtest_main)
    # Only a hang takes this long, also with sanitizers on a busy machine.
    set(properties TIMEOUT 600)
    if(ARG_SIMULATOR)
        list(APPEND properties RESOURCE_LOCK simulator-objects)
    endif()
    gtest_discover_tests(${ARG_NAME} TEST_PREFIX "${ARG_NAME}/" DISCOVERY_MODE PRE_TEST
        PROPERTIES ${properties})
endfunction()
