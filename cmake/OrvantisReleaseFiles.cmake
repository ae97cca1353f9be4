# From linked file to released file: symbols are split off, so that what ships is small and what is kept can still turn
# an address into a line of code.
#
#   g++            <build>/release/X without symbols, with a link to <build>/symbols/X.debug (DWARF)
#   clang + lld    with ORVANTIS_PDB: <build>/release/X without symbols, <build>/symbols/<name>.pdb; else as g++
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
        # The path in the file is the bare name: debuggers look beside the file and in their symbol paths.
        target_link_options(${target} PRIVATE
            "-Wl,--pdb=${symbols}" "-Wl,-Xlink=-pdbaltpath:${name}.pdb")
        set_property(TARGET ${target} APPEND PROPERTY ADDITIONAL_CLEAN_FILES "${symbols}")
        # The runtime libraries bring DWARF of their own.
        add_custom_command(OUTPUT "${released}"
            DEPENDS ${target}
            COMMAND ${dated} "${CMAKE_STRIP}" -o "${released}" "${linked}"
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
    install(PROGRAMS "${released}" DESTINATION . COMPONENT ${arg_COMPONENT})
    install(FILES "${symbols}" DESTINATION . COMPONENT symbols)
    set_property(GLOBAL APPEND PROPERTY ORVANTIS_RELEASED "${released}")
    set_property(GLOBAL APPEND PROPERTY ORVANTIS_SYMBOLS "${symbols}")
endfunction()

# The targets `release_files` (part of the whole build: packages are made of them) and `symbols`.
function(orvantis_add_release_targets)
    get_property(released GLOBAL PROPERTY ORVANTIS_RELEASED)
    get_property(symbols GLOBAL PROPERTY ORVANTIS_SYMBOLS)
    add_custom_target(release_files ALL DEPENDS ${released})
    add_custom_target(symbols DEPENDS ${released})
    if(MSVC)
        add_dependencies(release_files ${released_targets})
        add_dependencies(symbols ${released_targets})
    endif()
endfunction()
