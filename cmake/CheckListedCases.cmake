# Compares the test cases of a GoogleTest program with those registered with CTest:
# cmake -DEMULATOR=<command> -DPROGRAM=<file> -DCASES=<Suite.Case>,... -P CheckListedCases.cmake
string(REPLACE "," ";" expected "${CASES}")
execute_process(COMMAND ${EMULATOR} "${PROGRAM}" --gtest_list_tests
    OUTPUT_VARIABLE output RESULT_VARIABLE result)
if(NOT result EQUAL 0)
    message(FATAL_ERROR "${PROGRAM} does not list its cases")
endif()

# "Prefix/Suite.  # TypeParam = ..." and below it "  Case/Parameter  # GetParam() = ...".
string(REGEX REPLACE "\r|#[^\n]*" "" output "${output}")
string(REGEX MATCHALL "[^\n]+" lines "${output}")
set(found)
foreach(line IN LISTS lines)
    string(REGEX REPLACE "/[A-Za-z0-9_]+ *$" "" line "${line}")
    if(line MATCHES "^([A-Za-z0-9_]+/)?([A-Za-z0-9_]+)\\. *$")
        set(suite "${CMAKE_MATCH_2}")
    elseif(line MATCHES "^  ([A-Za-z0-9_]+) *$")
        list(APPEND found "${suite}.${CMAKE_MATCH_1}")
    endif()
endforeach()
list(REMOVE_DUPLICATES found)
list(SORT found)
list(SORT expected)
if(NOT found STREQUAL expected)
    message(FATAL_ERROR "The program's cases\n  ${found}\nare not those of CTest\n  ${expected}")
endif()
