# Links a library for Windows without a Qt for Windows. Creates import libraries with the names that the
# objects need from Qt; all other symbols must be found:
# cmake -DNM=<command> -DDLLTOOL=<command> -DCXX=<command> -DOBJECTS=<file>;...
# -DLIBRARIES=<file>;... -DOUTPUT=<file> -P LinkToNames.cmake
function(list_names variable)
    execute_process(COMMAND "${NM}" --format=posix ${ARGN} ${OBJECTS}
        OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
    string(REGEX MATCHALL "[^\n]+" lines "${output}")
    list(FILTER lines INCLUDE REGEX "^[^ ]+ [A-Za-z]( |$)")
    list(TRANSFORM lines REPLACE " .*" "")
    list(REMOVE_DUPLICATES lines)
    set(${variable} "${lines}" PARENT_SCOPE)
endfunction()

# Qt's names are those declared as imported, and virtual functions of its classes in the tables of
# derived classes.
list_names(asked --undefined-only)
list_names(defined --defined-only)
list(REMOVE_ITEM asked ${defined})
list(FILTER asked INCLUDE REGEX "^__imp_(_Z|q)|^_ZNK?[0-9]+Q")
list(TRANSFORM asked REPLACE "^__imp_" "")
list(REMOVE_DUPLICATES asked)

set(Gui_names ${asked})
list(FILTER Gui_names INCLUDE REGEX "QColor")
set(Core_names ${asked})
list(REMOVE_ITEM Core_names ${Gui_names})

cmake_path(GET OUTPUT PARENT_PATH folder)
set(import_libraries)
foreach(module IN ITEMS Core Gui)
    list(JOIN ${module}_names "\n" names)
    set(library "Qt6${module}")
    file(WRITE "${folder}/${library}.def" "LIBRARY ${library}.dll\nEXPORTS\n${names}\n")
    execute_process(COMMAND "${DLLTOOL}" --input-def "${folder}/${library}.def"
        --output-lib "${folder}/lib${library}.dll.a" COMMAND_ERROR_IS_FATAL ANY)
    list(APPEND import_libraries "${folder}/lib${library}.dll.a")
endforeach()

execute_process(COMMAND "${CXX}" -shared -o "${OUTPUT}" ${OBJECTS} ${LIBRARIES} ${import_libraries}
    COMMAND_ERROR_IS_FATAL ANY)
