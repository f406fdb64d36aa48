# Builds a package, unpacks it and compares its files with a list:
# cmake -DCPACK=<command> -DKIND=<generator> -DCONFIG=<file> -DUNPACKED=<folder> -DVERSION=<version>
# -DEXPECTED=<file>,... -DFORBIDDEN=<folder>,... -P checkpackage.cmake
string(REPLACE "," ";" expected "${EXPECTED}")
string(REPLACE "," ";" forbidden "${FORBIDDEN}")

set(packages "${UNPACKED}-from")
file(REMOVE_RECURSE "${UNPACKED}" "${packages}")
execute_process(COMMAND "${CPACK}" -G "${KIND}" --config "${CONFIG}" -B "${packages}"
    OUTPUT_VARIABLE output ERROR_VARIABLE output RESULT_VARIABLE result)
if(NOT result EQUAL 0)
    message(FATAL_ERROR "The package cannot be made:\n${output}")
endif()

file(GLOB archive "${packages}/rataip-${VERSION}-*.zip" "${packages}/rataip-${VERSION}-*.tar.gz")
list(LENGTH archive count)
if(NOT count EQUAL 1)
    message(FATAL_ERROR "One archive of version ${VERSION} was expected, not \"${archive}\"")
endif()
file(ARCHIVE_EXTRACT INPUT "${archive}" DESTINATION "${packages}/content")

# One folder at the top, so that unpacking does not scatter files.
cmake_path(GET archive FILENAME name)
string(REGEX REPLACE "\\.(zip|tar\\.gz)$" "" name "${name}")
file(GLOB top RELATIVE "${packages}/content" "${packages}/content/*")
if(NOT top STREQUAL name)
    message(FATAL_ERROR "The archive's top holds \"${top}\" instead of \"${name}\"")
endif()
file(RENAME "${packages}/content/${name}" "${UNPACKED}")

file(GLOB_RECURSE found RELATIVE "${UNPACKED}" "${UNPACKED}/*")
list(SORT found)
list(SORT expected)
set(leaked ${found})
list(REMOVE_ITEM leaked ${expected})
set(missing ${expected})
list(REMOVE_ITEM missing ${found})
if(leaked OR missing)
    message(FATAL_ERROR "The package lacks \"${missing}\" and has too much with \"${leaked}\"")
endif()

# No text of the package contains a path of this machine.
file(GLOB_RECURSE texts "${UNPACKED}/*.cmake" "${UNPACKED}/*.h" "${UNPACKED}/*.txt"
    "${UNPACKED}/*.md")
foreach(file IN LISTS texts)
    file(READ "${file}" text)
    foreach(folder IN LISTS forbidden)
        string(FIND "${text}" "${folder}" position)
        if(NOT position EQUAL -1)
            message(FATAL_ERROR "${file} names ${folder}")
        endif()
    endforeach()
endforeach()

file(STRINGS "${UNPACKED}/CHANGELOG.md" headings REGEX "^## ")
list(GET headings 0 newest)
if(NOT newest STREQUAL "## ${VERSION}")
    message(FATAL_ERROR "The change log begins with \"${newest}\", the version is ${VERSION}")
endif()

# The page must state the licence.
file(READ "${UNPACKED}/README.md" page)
if(NOT page MATCHES "\n## Licence\n\n[^\n]+licence")
    message(FATAL_ERROR "The package's page says nothing of a licence")
endif()
