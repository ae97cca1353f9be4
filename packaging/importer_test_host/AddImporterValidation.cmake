# add_importer_validation(TARGET target [NAME name] [LEVEL level] [CLIPS file...] [TIMEOUT seconds] [ARGUMENTS argument...])
#
# A CTest test, <target>.validation by default, that lets `importer_host validate` judge the module that the target builds, at
# level 5 by default, with the clips; without any, the tool makes clips of its own, AVI files. ARGUMENTS are handed to the command
# as they are (`--skip`, `--seed`, ...). The test's output tells every check that failed, and how to run it alone; a report that
# CI systems read is <name>.xml in the folder of the build. It fails when a check does.
function(add_importer_validation)
    cmake_parse_arguments(PARSE_ARGV 0 arg "" "TARGET;NAME;LEVEL;TIMEOUT" "CLIPS;ARGUMENTS")
    if(NOT TARGET "${arg_TARGET}" OR arg_UNPARSED_ARGUMENTS)
        message(FATAL_ERROR "add_importer_validation(TARGET target [NAME name] [LEVEL level] [CLIPS file...] "
            "[TIMEOUT seconds] [ARGUMENTS argument...]): no such target '${arg_TARGET}' or '${arg_UNPARSED_ARGUMENTS}' "
            "is none of these")
    endif()
    if(NOT arg_NAME)
        set(arg_NAME "${arg_TARGET}.validation")
    endif()
    if(NOT arg_LEVEL)
        set(arg_LEVEL 5)
    endif()
    if(NOT arg_TIMEOUT)
        set(arg_TIMEOUT 600)
    endif()
    set(clips "")
    foreach(clip IN LISTS arg_CLIPS)
        cmake_path(ABSOLUTE_PATH clip BASE_DIRECTORY "${CMAKE_CURRENT_SOURCE_DIR}")
        list(APPEND clips "${clip}")
    endforeach()
    # Built for another system than this one, both run the way that the build's own programs do.
    set(run "")
    if(CMAKE_CROSSCOMPILING)
        set(run ${CMAKE_CROSSCOMPILING_EMULATOR})
    endif()
    add_test(NAME "${arg_NAME}"
        COMMAND ${run} "$<TARGET_FILE:ImporterTestHost::importer_host>" validate "$<TARGET_FILE:${arg_TARGET}>" ${clips}
            --level "${arg_LEVEL}" --junit "${CMAKE_CURRENT_BINARY_DIR}/${arg_NAME}.xml" ${arg_ARGUMENTS})
    set_tests_properties("${arg_NAME}" PROPERTIES TIMEOUT "${arg_TIMEOUT}")
endfunction()
