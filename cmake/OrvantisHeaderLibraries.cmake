# Header-only libraries for tools and tests (never for the plug-in): orvantis_json (<nlohmann/json.hpp>), orvantis_cli11
# (<CLI/CLI.hpp>), orvantis_stb (<stb/stb_image_write.h>).
#
# The distribution keeps them among the build machine's own headers. That folder must not be on the include path of a
# cross build, where its C headers would hide the target's, so each library's folder alone is linked into the build tree.

# orvantis_header_library(TARGET FOLDER HEADER PACKAGE): FOLDER/HEADER becomes available as <FOLDER/HEADER>.
function(orvantis_header_library target folder header package)
    find_path(${target}_include_dir "${folder}/${header}"
        PATHS /usr/include /usr/local/include
        NO_CMAKE_FIND_ROOT_PATH
        DOC "Folder that holds ${folder}/${header}")
    if(NOT ${target}_include_dir)
        if(BUILD_TESTING)
            message(FATAL_ERROR "${folder}/${header} not found: install ${package} or set ${target}_include_dir")
        endif()
        message(STATUS "${folder}/${header} not found (package ${package}): no tools that need it")
        return()
    endif()
    add_library(${target} INTERFACE)
    if(CMAKE_HOST_UNIX)
        set(links "${CMAKE_BINARY_DIR}/header_libraries/${target}")
        file(MAKE_DIRECTORY "${links}")
        file(CREATE_LINK "${${target}_include_dir}/${folder}" "${links}/${folder}" SYMBOLIC)
        target_include_directories(${target} SYSTEM INTERFACE "${links}")
    else()
        target_include_directories(${target} SYSTEM INTERFACE "${${target}_include_dir}")
    endif()
endfunction()

orvantis_header_library(orvantis_json nlohmann json.hpp nlohmann-json3-dev)
orvantis_header_library(orvantis_cli11 CLI CLI.hpp libcli11-dev)
orvantis_header_library(orvantis_stb stb stb_image_write.h libstb-dev)
