# Run by build_installer.cmake: the MSI package, of the files in `stage`, with its checksum.
#
# Windows Installer tells packages apart by two codes. They are made of the version and the files, so that packaging a commit
# twice gives one package, and another build is another one.
set(msi "${CPACK_PACKAGE_DIRECTORY}/${CPACK_PACKAGE_NAME}-${CPACK_PACKAGE_VERSION}.msi")
if(NOT CPACK_ORVANTIS_WIXL OR NOT EXISTS "${stage}/importer_host.exe")
    return()
endif()
# Where the entry among the apps leads. The compiler's own conditions do not know what its command line defines.
set(LINKS "")
if(HOME_URL)
    set(LINKS "<Property Id=\"ARPURLINFOABOUT\" Value=\"${HOME_URL}\"/>
    <Property Id=\"ARPURLUPDATEINFO\" Value=\"${HOME_URL}/releases\"/>")
endif()
set(contents "${CPACK_PACKAGE_VERSION} ${HOME_URL}")
file(GLOB staged "${stage}/*")
foreach(file IN LISTS staged CPACK_ORVANTIS_MSI_ACTIONS CPACK_ORVANTIS_MSI_SOURCE)
    file(SHA256 "${file}" sum)
    string(APPEND contents " ${sum}")
endforeach()
set(namespace 0e3a1c0b-6b64-4f0e-9d0c-61c1c5d2f2a7)
string(UUID product NAMESPACE ${namespace} NAME "product ${contents}" TYPE SHA1 UPPER)
string(UUID package NAMESPACE ${namespace} NAME "package ${contents} $ENV{SOURCE_DATE_EPOCH}" TYPE SHA1 UPPER)
# The compiler takes files from the folder of its source only.
set(work "${CPACK_TOPLEVEL_DIRECTORY}/msi-stage")
file(REMOVE_RECURSE "${work}")
file(MAKE_DIRECTORY "${work}")
file(COPY ${staged} DESTINATION "${work}")
configure_file("${CPACK_ORVANTIS_MSI_SOURCE}" "${work}/ImporterOrvantis.wxs" @ONLY)
configure_file("${CPACK_ORVANTIS_MSI_ACTIONS}" "${work}/setup_actions.dll" COPYONLY)
file(GLOB files "${work}/*")
# Cabinets record the date of each file.
execute_process(COMMAND touch -d "@$ENV{SOURCE_DATE_EPOCH}" ${files} COMMAND_ERROR_IS_FATAL ANY)
file(REMOVE "${msi}")
execute_process(
    COMMAND "${CPACK_ORVANTIS_WIXL}" -a x64 -o "${msi}"
        -D "VERSION=${CPACK_PACKAGE_VERSION}" -D "PRODUCT=${product}" -D "PACKAGE=${package}" ImporterOrvantis.wxs
    WORKING_DIRECTORY "${work}" COMMAND_ERROR_IS_FATAL ANY)
execute_process(
    COMMAND "${CPACK_ORVANTIS_PYTHON}" "${CMAKE_CURRENT_LIST_DIR}/settle_package.py" "${msi}" "${package}"
        "$ENV{SOURCE_DATE_EPOCH}"
    COMMAND_ERROR_IS_FATAL ANY)
if(COMMAND sign)
    sign("${msi}")
endif()
file(SHA256 "${msi}" sum)
get_filename_component(name "${msi}" NAME)
file(WRITE "${msi}.sha256" "${sum}  ${name}\n")
message(STATUS "MSI package: ${msi}")
