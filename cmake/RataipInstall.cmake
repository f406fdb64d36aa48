# The contents of a package: the plugin, the programs, and what the author of a host needs. Without a Qt
# for the target platform only the simulator and the texts.
include(CMakePackageConfigHelpers)

# The same folders on every platform, because the package can be unpacked anywhere. The programs look
# for the plugin beside themselves and in ../plugins.
set(program_folder "bin")
set(plugin_folder "plugins")
set(library_folder "lib")
set(header_folder "include/rataip")
set(package_folder "${library_folder}/cmake/rataip")

install(TARGETS rataip-simulator RUNTIME DESTINATION "${program_folder}")

if(RATAIP_HAVE_QT)
    install(TARGETS rataip-monitor RUNTIME DESTINATION "${program_folder}")
    if(TARGET rataip-viewer)
        install(TARGETS rataip-viewer RUNTIME DESTINATION "${program_folder}")
    endif()
    install(TARGETS rataip LIBRARY DESTINATION "${plugin_folder}")

    # Everything in sdk/ is part of the interface.
    file(GLOB headers CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/sdk/*.h")
    install(FILES ${headers} "${PROJECT_BINARY_DIR}/sdk/generated/sdk/interfaceid.h"
        DESTINATION "${header_folder}/sdk")

    set_target_properties(tlm_sdk PROPERTIES EXPORT_NAME SDK)
    install(TARGETS tlm_sdk EXPORT rataip-targets
        ARCHIVE DESTINATION "${library_folder}"
        INCLUDES DESTINATION "${header_folder}")
    install(EXPORT rataip-targets NAMESPACE TLM:: DESTINATION "${package_folder}")

    configure_package_config_file(cmake/rataip-config.cmake.in
        "${PROJECT_BINARY_DIR}/package/rataip-config.cmake"
        INSTALL_DESTINATION "${package_folder}"
        NO_SET_AND_CHECK_MACRO)
    write_basic_package_version_file("${PROJECT_BINARY_DIR}/package/rataip-config-version.cmake"
        COMPATIBILITY SameMinorVersion)
    install(FILES
        "${PROJECT_BINARY_DIR}/package/rataip-config.cmake"
        "${PROJECT_BINARY_DIR}/package/rataip-config-version.cmake"
        DESTINATION "${package_folder}")

    set(package_qt "Qt ${Qt6_VERSION}")
    set(package_interface "${RATAIP_INTERFACE_PREFIX}.PluginInterfaceLive/0.2")
    configure_file(INSTALL.txt.in "${PROJECT_BINARY_DIR}/package/INSTALL.txt" @ONLY)
    install(FILES "${PROJECT_BINARY_DIR}/package/INSTALL.txt" DESTINATION .)
    install(FILES docs/viewer.md docs/viewer-20-cars.png docs/viewer-64-cars.png
        docs/viewer-lap.png docs/lap.png DESTINATION docs)
endif()
install(FILES docs/simulator.md DESTINATION docs)
install(FILES CHANGELOG.md THIRD_PARTY.md DESTINATION .)

# rataip_readme_section(<variable> <heading>): a section of README.md, with its heading.
function(rataip_readme_section variable heading)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/README.md")
    file(READ "${PROJECT_SOURCE_DIR}/README.md" text)
    string(FIND "${text}" "\n## ${heading}\n" start)
    if(start EQUAL -1)
        message(FATAL_ERROR "README.md has no section \"${heading}\"")
    endif()
    math(EXPR start "${start} + 1")
    string(SUBSTRING "${text}" ${start} -1 text)
    string(FIND "${text}" "\n## " end)
    math(EXPR end "${end} + 1")
    string(SUBSTRING "${text}" 0 ${end} text)
    set(${variable} "${text}" PARENT_SCOPE)
endfunction()

# The package has its own README about its contents instead of the build. Its sections on hosts and
# programs come from README.md.
if(RATAIP_HAVE_QT)
    rataip_readme_section(host_section "Load it from a host")
    rataip_readme_section(programs_section "The programs")
    set(viewer_row "")
    if(TARGET rataip-viewer)
        set(viewer_row ", `rataip-viewer` (a window)")
    endif()
    set(package_rows "\
| `plugins/` | the plugin |
| `bin/` | `rataip-monitor` (a host for the console)${viewer_row}, `rataip-simulator` (a stand-in for the simulator) |
| `include/`, `lib/` | for the author of a host: headers, library, CMake package |
| [INSTALL.txt](INSTALL.txt) | where things go, which host the plugin fits, what must lie beside it |
")
    set(package_steps "\
## See it run

Without a simulator, in two consoles:

    bin/rataip-simulator --session practice --cars 12
    bin/rataip-monitor --laps 5

The monitor finds the plugin of this package, names the cars, and ends after the first five laps of any
car. With the real simulator, leave the first line out.

${host_section}${programs_section}")
else()
    set(package_rows "\
| `bin/` | `rataip-simulator` (a stand-in for the simulator); what needs Qt was not built |
")
    set(package_steps "\
## See it run

    bin/rataip-simulator --session practice --cars 12

")
endif()
configure_file(PACKAGE.md.in "${PROJECT_BINARY_DIR}/package/README.md" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/package/README.md" DESTINATION .)

set(CPACK_PACKAGE_NAME "rataip")
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
if(WIN32)
    set(CPACK_GENERATOR ZIP)
else()
    set(CPACK_GENERATOR TGZ)
endif()
set(CPACK_PACKAGE_FILE_NAME
    "rataip-${PROJECT_VERSION}-${CMAKE_SYSTEM_NAME}-${CMAKE_SYSTEM_PROCESSOR}")
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
include(CPack)
