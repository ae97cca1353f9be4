# The target `quick`: seconds from an edit to an answer. Each test program has a file that says it passed; the build makes it
# by running the tests, and so runs again exactly what was linked anew or loads what was linked anew.

# orvantis_quick_compile(target source...): compiles the files of a test program several at a time, which saves a third of a
# fresh build. A file that declares a name which a file ahead of it has as well, as anonymous namespaces allow, is compiled
# by itself: what stands at the margin and looks like a declaration is compared.
function(orvantis_quick_compile target)
    orvantis_unity_build(${target})
    set(known "")
    foreach(source IN LISTS ARGN)
        if(NOT IS_ABSOLUTE "${source}")
            set(source "${CMAKE_CURRENT_SOURCE_DIR}/${source}")
        endif()
        if(NOT source MATCHES "\\.cpp$")
            continue()
        endif()
        file(STRINGS "${source}" lines REGEX "^(const|constexpr|inline|static|using|class|struct|enum|std::|[A-Za-z]).*")
        set(own "")
        foreach(line IN LISTS lines)
            if(line MATCHES "^TEST|^INSTANTIATE|^namespace|^using [A-Za-z_:]+;|^template")
                continue()
            elseif(line MATCHES "^(class|struct|enum class|enum|using) ([A-Za-z_0-9]+)")
                list(APPEND own "${CMAKE_MATCH_2}")
            elseif(line MATCHES "[ &*]([A-Za-z_][A-Za-z_0-9]*)(\\(| =|\\[|{)")
                list(APPEND own "${CMAKE_MATCH_1}")
            endif()
        endforeach()
        list(REMOVE_DUPLICATES own)
        set(alone OFF)
        foreach(name IN LISTS own)
            if(name IN_LIST known)
                set(alone ON)
            endif()
        endforeach()
        if(alone)
            set_source_files_properties("${source}" PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
        else()
            list(APPEND known ${own})
        endif()
    endforeach()
endfunction()

# orvantis_quick_test(NAME name PROGRAM target [ARGUMENTS ...] [ENVIRONMENT NAME=VALUE...] [FILTER filter] [APART filter]
#                     [FIXTURES name] [DEPENDS target-or-file...])
# FILTER and APART as for orvantis_add_test.
function(orvantis_quick_test)
    if(NOT ORVANTIS_QUICK)
        return()
    endif()
    cmake_parse_arguments(arg "" "NAME;PROGRAM;FILTER;APART;FIXTURES" "ARGUMENTS;ENVIRONMENT;DEPENDS" ${ARGN})
    set(passed "${CMAKE_BINARY_DIR}/quick/${arg_NAME}.passed")
    set(run "${PROJECT_SOURCE_DIR}/cmake/run-quick-test.sh")
    foreach(fixture IN LISTS arg_FIXTURES)
        list(APPEND arg_DEPENDS "${CMAKE_BINARY_DIR}/quick/${fixture}.made")
    endforeach()
    add_custom_command(OUTPUT "${passed}"
        COMMAND "${CMAKE_COMMAND}" -E env ${arg_ENVIRONMENT} "QUICK_FILTER=${arg_FILTER}" "QUICK_APART=${arg_APART}"
            sh "${run}" "${passed}" "$<TARGET_FILE:${arg_PROGRAM}>" ${arg_ARGUMENTS}
        DEPENDS ${arg_PROGRAM} ${arg_DEPENDS} "${run}"
        COMMENT "Testing ${arg_NAME}"
        VERBATIM)
    # A command belongs to its folder, where a target has to ask for it.
    add_custom_target(quick.${arg_NAME} DEPENDS "${passed}")
    set_property(GLOBAL APPEND PROPERTY ORVANTIS_QUICK_TESTS quick.${arg_NAME})
endfunction()

# orvantis_quick_fixture(name COMMAND...): as orvantis_add_fixture.
function(orvantis_quick_fixture name)
    if(NOT ORVANTIS_QUICK)
        return()
    endif()
    set(made "${CMAKE_BINARY_DIR}/quick/${name}.made")
    add_custom_command(OUTPUT "${made}"
        COMMAND ${ARGN}
        COMMAND "${CMAKE_COMMAND}" -E touch "${made}"
        COMMENT "Making test files: ${name}"
        VERBATIM)
    add_custom_target(quick.${name} DEPENDS "${made}")
endfunction()

# orvantis_add_quick_target(): once, behind all tests of the folder that calls it and those below.
function(orvantis_add_quick_target)
    if(ORVANTIS_QUICK)
        get_property(tests GLOBAL PROPERTY ORVANTIS_QUICK_TESTS)
        add_custom_target(quick DEPENDS ${tests})
    endif()
endfunction()
