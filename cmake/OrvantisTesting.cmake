# GoogleTest from the distribution's source package, and the function that every test folder uses.

set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
set(gtest_force_shared_crt ON CACHE BOOL "" FORCE)
add_subdirectory("${ORVANTIS_GOOGLETEST_DIR}" "${CMAKE_BINARY_DIR}/googletest" EXCLUDE_FROM_ALL)
if(ORVANTIS_SANITIZE)
    foreach(lib gtest gtest_main gmock gmock_main)
        target_compile_options(${lib} PRIVATE -fsanitize=${ORVANTIS_SANITIZE} -fno-omit-frame-pointer)
    endforeach()
endif()
include(GoogleTest)

# Windows programs built on Linux run through Wine. The wrapper knows the folder of the stand-in codec library.
if(WIN32 AND CMAKE_CROSSCOMPILING)
    configure_file("${PROJECT_SOURCE_DIR}/cmake/wine-run.in" "${CMAKE_BINARY_DIR}/wine-run"
        @ONLY FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
    set(CMAKE_CROSSCOMPILING_EMULATOR "${CMAKE_BINARY_DIR}/wine-run")
endif()

# Builds the programs labelled "concurrency", all that a run under ThreadSanitizer needs.
add_custom_target(concurrency_tests)

# orvantis_add_test(NAME name SOURCES ... [LIBRARIES ...] [LABELS ...] [TIMEOUT seconds] [RESOURCE_LOCK name] [FIXTURES name])
# A GoogleTest program; each of its tests is one CTest test named <name>.<Suite>.<Test>, run in a process of its own.
function(orvantis_add_test)
    cmake_parse_arguments(arg "" "NAME;TIMEOUT;RESOURCE_LOCK;FIXTURES" "SOURCES;LIBRARIES;LABELS" ${ARGN})
    add_executable(${arg_NAME} ${arg_SOURCES})
    target_link_libraries(${arg_NAME} PRIVATE orvantis_options ${arg_LIBRARIES} GTest::gtest GTest::gmock GTest::gtest_main)
    # What is tested is optimised; the tests themselves are quick to compile instead.
    target_compile_options(${arg_NAME} PRIVATE $<$<CXX_COMPILER_ID:GNU,Clang>:-Wno-sign-conversion;-O0;-g1>)
    if(NOT arg_TIMEOUT)
        set(arg_TIMEOUT 120)
    endif()
    set(properties TIMEOUT ${arg_TIMEOUT})
    if(arg_LABELS)
        list(APPEND properties LABELS "${arg_LABELS}")
    endif()
    if(ORVANTIS_SANITIZE STREQUAL "thread")
        list(APPEND properties ENVIRONMENT "TSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tests/tsan.supp")
    endif()
    if("concurrency" IN_LIST arg_LABELS)
        add_dependencies(concurrency_tests ${arg_NAME})
    endif()
    if(arg_RESOURCE_LOCK)
        list(APPEND properties RESOURCE_LOCK "${arg_RESOURCE_LOCK}")
    endif()
    if(arg_FIXTURES)
        list(APPEND properties FIXTURES_REQUIRED "${arg_FIXTURES}")
    endif()
    gtest_discover_tests(${arg_NAME}
        TEST_PREFIX "${arg_NAME}."
        DISCOVERY_MODE PRE_TEST
        DISCOVERY_TIMEOUT 120
        PROPERTIES ${properties})
endfunction()
