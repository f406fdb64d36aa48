# Compares the symbols that a library exports with a list: cmake -DNM=<nm> -DLIBRARY=<file>
# -DEXPECTED=<name>,<name> -P checkexports.cmake. The list is in ascending order.
string(REPLACE "," ";" expected "${EXPECTED}")
execute_process(COMMAND "${NM}" --dynamic --defined-only --format=posix "${LIBRARY}"
    OUTPUT_VARIABLE output RESULT_VARIABLE result)
if(NOT result EQUAL 0)
    message(FATAL_ERROR "${NM} cannot read ${LIBRARY}")
endif()
string(REGEX MATCHALL "[^\n]+" lines "${output}")
set(exported)
foreach(line IN LISTS lines)
    string(REGEX REPLACE " .*" "" symbol "${line}")
    list(APPEND exported "${symbol}")
endforeach()
list(SORT exported)
if(NOT exported STREQUAL expected)
    message(FATAL_ERROR "${LIBRARY} exports\n  ${exported}\ninstead of\n  ${expected}")
endif()
