# After building everything in a bigger build: runs the host, and checks that nothing extra was built:
# cmake -DBUILD=<folder> -DCONSUMER=<file> -DPLUGIN=<file> -DVERSION=<version> -P check.cmake
execute_process(COMMAND "${CONSUMER}" "${PLUGIN}" "${VERSION}" COMMAND_ERROR_IS_FATAL ANY)

file(GLOB unwanted "${BUILD}/rataip/bin/*" "${BUILD}/bin/*"
    "${BUILD}/CPackConfig.cmake" "${BUILD}/compile_commands.json")
if(unwanted)
    message(FATAL_ERROR "The part has also made \"${unwanted}\"")
endif()
