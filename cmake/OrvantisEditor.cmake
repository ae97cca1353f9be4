# Editors look for compile_commands.json in the folders above a file. CMake's own has no command for files that are compiled
# several at a time; the build writes one that has, and a link to it in the folder of the sources, where clang understands the
# commands.
find_package(Python3 COMPONENTS Interpreter QUIET)
if(NOT (PROJECT_IS_TOP_LEVEL AND CMAKE_CXX_COMPILER_ID STREQUAL "Clang" AND CMAKE_GENERATOR MATCHES "Ninja|Makefiles"
        AND Python3_FOUND))
    return()
endif()
set(commands "${CMAKE_BINARY_DIR}/editor/compile_commands.json")
add_custom_command(OUTPUT "${commands}"
    COMMAND "${Python3_EXECUTABLE}" "${PROJECT_SOURCE_DIR}/scripts/editor_commands.py"
        "${CMAKE_BINARY_DIR}/compile_commands.json" "${commands}" "${PROJECT_SOURCE_DIR}/compile_commands.json"
    DEPENDS "${PROJECT_SOURCE_DIR}/scripts/editor_commands.py" "${CMAKE_BINARY_DIR}/compile_commands.json"
    COMMENT "Writing the compile commands for editors"
    VERBATIM)
add_custom_target(editor_commands ALL DEPENDS "${commands}")
