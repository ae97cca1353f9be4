# CPack runs this after it has made the other zips. In all of those lies one folder that has the plug-in's name; the validator's
# has a folder of its own name, and so takes a run of its own.
if(NOT CPACK_ORVANTIS_VALIDATOR)
    return()
endif()
set(name "importer-validator-${CPACK_PACKAGE_VERSION}-win64")
set(folder "${CPACK_TOPLEVEL_DIRECTORY}/validator")
file(REMOVE_RECURSE "${folder}")
execute_process(
    COMMAND "${CMAKE_CPACK_COMMAND}" --config "${CPACK_ORVANTIS_BUILD_DIR}/CPackConfig.cmake" -B "${folder}"
        -D "CPACK_PACKAGE_FILE_NAME=${name}" -D "CPACK_ARCHIVE_VALIDATOR_FILE_NAME=${name}"
        -D CPACK_COMPONENTS_ALL=validator -D CPACK_COMPONENT_VALIDATOR_GROUP=validator -D CPACK_POST_BUILD_SCRIPTS=
    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
file(COPY "${folder}/${name}.zip" "${folder}/${name}.zip.sha256" DESTINATION "${CPACK_PACKAGE_DIRECTORY}")
