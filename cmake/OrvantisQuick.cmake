# The targets `quick` and `quick_all`: seconds from an edit to an answer. Each test program has a file that says it passed; the build makes it
# by running the tests, and so runs again exactly what was linked anew or loads what was linked anew.

# orvantis_quick_test([ALL] NAME name PROGRAM target [ARGUMENTS ...] [ENVIRONMENT NAME=VALUE...] [FILTER filter] [APART filter]
#                     [WITHOUT filter] [FIXTURES name] [DEPENDS target-or-file...])
# FILTER, APART and WITHOUT as for orvantis_add_test. ALL: only for `quick_all`.
function(orvantis_quick_test)
    if(NOT ORVANTIS_QUICK)
        return()
    endif()
    cmake_parse_arguments(arg "ALL" "NAME;PROGRAM;FILTER;APART;WITHOUT;FIXTURES" "ARGUMENTS;ENVIRONMENT;DEPENDS" ${ARGN})
    set(passed "${CMAKE_BINARY_DIR}/quick/${arg_NAME}.passed")
    set(run "${PROJECT_SOURCE_DIR}/cmake/run-quick-test.sh")
    foreach(fixture IN LISTS arg_FIXTURES)
        list(APPEND arg_DEPENDS "${CMAKE_BINARY_DIR}/quick/${fixture}.made")
    endforeach()
    add_custom_command(OUTPUT "${passed}"
        COMMAND "${CMAKE_COMMAND}" -E env ${arg_ENVIRONMENT} "QUICK_FILTER=${arg_FILTER}" "QUICK_APART=${arg_APART}"
            "QUICK_WITHOUT=${arg_WITHOUT}"
            sh "${run}" "${passed}" "$<TARGET_FILE:${arg_PROGRAM}>" ${arg_ARGUMENTS}
        DEPENDS ${arg_PROGRAM} ${arg_DEPENDS} "${run}"
        COMMENT "Testing ${arg_NAME}"
        VERBATIM)
    # A command belongs to its folder, where a target has to ask for it.
    add_custom_target(quick.${arg_NAME} DEPENDS "${passed}")
    set_property(GLOBAL APPEND PROPERTY ORVANTIS_QUICK_ALL_TESTS quick.${arg_NAME})
    if(NOT arg_ALL)
        set_property(GLOBAL APPEND PROPERTY ORVANTIS_QUICK_TESTS quick.${arg_NAME})
    endif()
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
        foreach(target quick quick_all)
            string(TOUPPER "ORVANTIS_${target}_TESTS" tests)
            get_property(tests GLOBAL PROPERTY ${tests})
            add_custom_target(${target} DEPENDS ${tests})
        endforeach()
    endif()
endfunction()
