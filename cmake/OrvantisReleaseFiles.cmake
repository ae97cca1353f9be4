# From linked file to released file: symbols are split off, so that what ships is small and what is kept can still turn
# an address into a line of code.
#
#   g++            <build>/release/X without symbols, with a link to <build>/symbols/X.debug (DWARF)
#   clang + lld    with ORVANTIS_PDB: <build>/release/X without symbols, <build>/symbols/<name>.pdb; else as g++. Both lie in
#                  <build>/symbol-store as debuggers look for them
#   MSVC           X as linked (symbols are never inside), its PDB

# orvantis_release_file(TARGET FILE COMPONENT name): FILE is the target's file name.
function(orvantis_release_file target file)
    cmake_parse_arguments(arg "" "COMPONENT" "" ${ARGN})
    if(MSVC)
        install(FILES "$<TARGET_FILE:${target}>" DESTINATION . COMPONENT ${arg_COMPONENT})
        install(FILES "$<TARGET_PDB_FILE:${target}>" DESTINATION . COMPONENT symbols)
        return()
    endif()

    set(linked "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${file}")
    set(released "${release_dir}/${file}")
    file(MAKE_DIRECTORY "${release_dir}" "${symbols_dir}")
    # These tools write the time of day into the file unless they are given a date; 0 is what the linker wrote.
    set(dated "${CMAKE_COMMAND}" -E env SOURCE_DATE_EPOCH=0)
    if(ORVANTIS_PDB)
        get_filename_component(name "${file}" NAME_WE)
        set(symbols "${symbols_dir}/${name}.pdb")
        orvantis_link_pdb(${target} ${name})
        set_property(TARGET ${target} APPEND PROPERTY ADDITIONAL_CLEAN_FILES "${symbols}")
        # The runtime libraries bring DWARF of their own.
        add_custom_command(OUTPUT "${released}"
            DEPENDS ${target}
            COMMAND "${CMAKE_STRIP}" -o "${released}" "${linked}"
            COMMENT "Releasing ${file}"
            VERBATIM)
    else()
        set(symbols "${symbols_dir}/${file}.debug")
        add_custom_command(OUTPUT "${released}" "${symbols}"
            DEPENDS ${target}
            COMMAND ${dated} "${CMAKE_OBJCOPY}" --only-keep-debug "${linked}" "${symbols}"
            COMMAND ${dated} "${CMAKE_STRIP}" -o "${released}.stripped" "${linked}"
            COMMAND ${dated} "${CMAKE_OBJCOPY}" "--add-gnu-debuglink=${symbols}" "${released}.stripped" "${released}"
            COMMAND "${CMAKE_COMMAND}" -E rm "${released}.stripped"
            COMMENT "Releasing ${file}"
            VERBATIM)
    endif()
    # One of its own, so that asking for this file builds this file's target and no other's.
    add_custom_target(release_${target} DEPENDS "${released}")
    install(PROGRAMS "${released}" DESTINATION . COMPONENT ${arg_COMPONENT})
    if(NOT ORVANTIS_PDB)
        install(FILES "${symbols}" DESTINATION . COMPONENT symbols)
    endif()
    set_property(GLOBAL APPEND PROPERTY ORVANTIS_RELEASED "${released}")
    set_property(GLOBAL APPEND PROPERTY ORVANTIS_SYMBOLS "${symbols}")
endfunction()

# The targets `release_files` (part of the whole build: packages are made of them) and `symbols`.
function(orvantis_add_release_targets)
    get_property(released GLOBAL PROPERTY ORVANTIS_RELEASED)
    get_property(symbols GLOBAL PROPERTY ORVANTIS_SYMBOLS)
    set(made ${released})
    if(ORVANTIS_PDB)
        set(store "${CMAKE_BINARY_DIR}/symbol-store")
        orvantis_symbol_store("${store}" RELEASED ${released} SYMBOLS ${symbols})
        install(DIRECTORY "${store}/" DESTINATION . COMPONENT symbols)
        list(APPEND made "${store}.made")
    endif()
    add_custom_target(release_files ALL DEPENDS ${made})
    add_custom_target(symbols DEPENDS ${made})
    if(MSVC)
        add_dependencies(release_files ${released_targets})
        add_dependencies(symbols ${released_targets})
    endif()
endfunction()

# orvantis_symbol_store(FOLDER RELEASED files SYMBOLS files): FOLDER becomes a symbol store of them, FOLDER.made says when.
function(orvantis_symbol_store store)
    cmake_parse_arguments(arg "" "" "RELEASED;SYMBOLS" ${ARGN})
    find_package(Python3 REQUIRED COMPONENTS Interpreter)
    set(pairs)
    foreach(file symbols IN ZIP_LISTS arg_RELEASED arg_SYMBOLS)
        list(APPEND pairs "${file}" "${symbols}")
    endforeach()
    set(script "${PROJECT_SOURCE_DIR}/scripts/symbolizing")
    add_custom_command(OUTPUT "${store}.made"
        DEPENDS ${arg_RELEASED} "${script}/make_store.py" "${script}/pe_image.py"
        COMMAND "${CMAKE_COMMAND}" -E env PYTHONDONTWRITEBYTECODE=1
            "${Python3_EXECUTABLE}" "${script}/make_store.py" "${store}" ${pairs}
        COMMAND "${CMAKE_COMMAND}" -E touch "${store}.made"
        COMMENT "Laying out the symbols"
        VERBATIM)
endfunction()
