# Brings the released files up to date and lets CPack make the packages from them, as the target `package` does.
file(REMOVE_RECURSE "${PACKAGES}")
execute_process(COMMAND "${CMAKE_COMMAND}" --build "${BUILD_DIR}" --target packaging_test_files
    COMMAND_ERROR_IS_FATAL ANY)
execute_process(
    COMMAND "${CMAKE_COMMAND}" -E env "SOURCE_DATE_EPOCH=${DATE}" "ORVANTIS_HOME_URL=${HOME_URL}"
        "${CPACK}" --config "${BUILD_DIR}/CPackConfig.cmake" -B "${PACKAGES}"
    WORKING_DIRECTORY "${BUILD_DIR}" COMMAND_ERROR_IS_FATAL ANY)
