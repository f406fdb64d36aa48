# Builds 64-bit Windows programs on Linux with mingw-w64, as Debian packages it.
#
# A Qt for Windows is found where CMAKE_PREFIX_PATH says; its tools for the building machine come from
# QT_HOST_PATH.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

# The variant with POSIX threads is the one that has std::thread and std::mutex.
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)

# Programs come from the building machine, everything else from the target's folders alone: a header
# or a package of the building machine would be found, and would be wrong.
set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32 ${CMAKE_PREFIX_PATH})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
