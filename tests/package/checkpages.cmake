# Finds files that the pages of a folder name but that are not in it:
# cmake -DFOLDER=<folder> -DSUFFIX=<of programs> -P checkpages.cmake
#
# It checks relative links, commands like ./name, and names that begin with a folder of the package
# or of the sources. Headers are named as they are included.
string(CONCAT folders "bin|docs|include|lib|plugins|"
    "sdk|irsdk|yaml|reader|plugin|tools|benchmarks|tests|cmake|scripts|build")

file(GLOB_RECURSE pages RELATIVE "${FOLDER}" "${FOLDER}/*.md" "${FOLDER}/*.txt")
if(NOT pages)
    message(FATAL_ERROR "There is no page in ${FOLDER}")
endif()

set(absent)
foreach(page IN LISTS pages)
    file(READ "${FOLDER}/${page}" text)
    # Brackets and semicolons have a meaning in CMake lists.
    string(REPLACE "](" "<link:" text "${text}")
    string(REGEX REPLACE "[][;]" " " text "${text}")
    cmake_path(GET page PARENT_PATH page_folder)

    string(REGEX MATCHALL "<link:[^ ):#]+[)#]" links "${text}")
    list(TRANSFORM links REPLACE "<link:(.+)[)#]$" "\\1")
    if(page_folder)
        list(TRANSFORM links PREPEND "${page_folder}/")
    endif()

    string(REGEX MATCHALL "[ \n`(\"]((${folders})/|\\./)[A-Za-z0-9_./-]*" names "${text}")
    list(TRANSFORM names REPLACE ".(.*[A-Za-z0-9_-])[./]*$" "\\1")

    foreach(name IN LISTS links names)
        set(found FALSE)
        foreach(place IN ITEMS "${name}" "${name}${SUFFIX}" "include/rataip/${name}")
            if(EXISTS "${FOLDER}/${place}")
                set(found TRUE)
            endif()
        endforeach()
        if(NOT found)
            list(APPEND absent "${page}: ${name}")
        endif()
    endforeach()
endforeach()
if(absent)
    list(JOIN absent "\n  " absent)
    message(FATAL_ERROR "Pages name what is not there:\n  ${absent}")
endif()
