# CPack runs this after it has made the zips: compiles installer.nsi from the files that went into them, writes the
# installer's checksum, and makes the MSI package and the manifests of package managers.
if(NOT CPACK_ORVANTIS_MAKENSIS)
    return()
endif()
set(installer "${CPACK_PACKAGE_DIRECTORY}/${CPACK_PACKAGE_NAME}-${CPACK_PACKAGE_VERSION}-setup.exe")

# One folder with exactly the files to install, wherever CPack put each component. Symbols are not installed.
set(stage "${CPACK_TOPLEVEL_DIRECTORY}/installer-stage")
file(REMOVE_RECURSE "${stage}")
file(MAKE_DIRECTORY "${stage}")
foreach(component plugin tool texts)
    file(GLOB_RECURSE files "${CPACK_TEMPORARY_DIRECTORY}/${component}/*")
    file(COPY ${files} DESTINATION "${stage}")
endforeach()

include("${CMAKE_CURRENT_LIST_DIR}/home_url.cmake")
set(defines "-DVERSION=${CPACK_PACKAGE_VERSION}" "-DSTAGE=${stage}" "-DOUTFILE=${installer}")
if(EXISTS "${stage}/importer_host.exe")
    list(APPEND defines -DHAVE_TOOL)
endif()
if(HOME_URL)
    list(APPEND defines "-DHOME_URL=${HOME_URL}")
endif()
if(DEFINED ENV{ORVANTIS_SIGN_PROGRAM})
    list(APPEND defines "-DSIGN=$ENV{ORVANTIS_SIGN_PROGRAM}")
endif()
execute_process(
    COMMAND "${CPACK_ORVANTIS_MAKENSIS}" -V2 -WX ${defines} "${CPACK_ORVANTIS_INSTALLER_SCRIPT}"
    COMMAND_ERROR_IS_FATAL ANY)

# sign(FILE): by the program that ORVANTIS_SIGN_PROGRAM names (scripts/sign-release.sh), in place.
function(sign file)
    if(DEFINED ENV{ORVANTIS_SIGN_PROGRAM})
        execute_process(COMMAND "$ENV{ORVANTIS_SIGN_PROGRAM}" "${file}" COMMAND_ERROR_IS_FATAL ANY)
    endif()
endfunction()

sign("${installer}")
file(SHA256 "${installer}" sum)
get_filename_component(name "${installer}" NAME)
file(WRITE "${installer}.sha256" "${sum}  ${name}\n")
message(STATUS "Installer: ${installer}")

include("${CMAKE_CURRENT_LIST_DIR}/msi/build_msi.cmake")
include("${CMAKE_CURRENT_LIST_DIR}/manifests/build_manifests.cmake")

# What is in the packages, and where they come from.
if(EXISTS "${msi}")
    set(parts "${CMAKE_CURRENT_LIST_DIR}/sbom")
    set(record "${CPACK_ORVANTIS_BUILD_DIR}/build-record.json")
    set(out "${CPACK_PACKAGE_DIRECTORY}/${CPACK_PACKAGE_NAME}-${CPACK_PACKAGE_VERSION}")
    execute_process(
        COMMAND "${CPACK_ORVANTIS_PYTHON}" -B "${parts}/make_sbom.py" "${CPACK_PACKAGE_VERSION}" "${stage}" "${record}"
            "${out}.cdx.json" "${out}.spdx.json"
        COMMAND_ERROR_IS_FATAL ANY)
    file(GLOB validator "${CPACK_PACKAGE_DIRECTORY}/importer-validator-${CPACK_PACKAGE_VERSION}-win64.zip")
    set(ENV{ORVANTIS_HOME_URL} "${HOME_URL}")
    execute_process(
        COMMAND "${CPACK_ORVANTIS_PYTHON}" -B "${parts}/make_provenance.py" "${record}" "${out}.intoto.json"
            "${installer}" "${msi}" ${validator} ${CPACK_PACKAGE_FILES}
        COMMAND_ERROR_IS_FATAL ANY)
endif()
