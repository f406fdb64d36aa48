# What a package holds: the plugin, the programs, and what the author of a host needs. Without a Qt
# for the target platform that is the simulator and the texts.
include(CMakePackageConfigHelpers)

# The same folders on every platform, since the package is unpacked anywhere. The programs look for
# the plugin beside themselves and in ../plugins.
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

    # Everything in sdk/ is the interface or what it hands out.
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
else()
    set(package_qt "no Qt: the package holds the simulator alone")
    set(package_interface "none")
endif()

configure_file(INSTALL.txt.in "${PROJECT_BINARY_DIR}/package/INSTALL.txt" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/package/INSTALL.txt" README.md CHANGELOG.md THIRD_PARTY.md
    DESTINATION .)
install(DIRECTORY docs DESTINATION .)

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
