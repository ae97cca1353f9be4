# GoogleTest from the distribution's source package, and the function that every test folder uses.

# With an edit in mind (see OrvantisQuick.cmake): the target `quick` runs the tests that an edit of the plug-in can break.
option(ORVANTIS_QUICK "The target `quick`, which runs the tests whose programs changed" OFF)
include(OrvantisQuick)

set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
set(gtest_force_shared_crt ON CACHE BOOL "" FORCE)
add_subdirectory("${ORVANTIS_GOOGLETEST_DIR}" "${CMAKE_BINARY_DIR}/googletest" EXCLUDE_FROM_ALL)
# The line numbers of what tests call: for sanitizers and for the stacks of a test that hangs.
set(lines -g1)
if(ORVANTIS_QUICK OR ORVANTIS_PDB)
    set(lines -g0)
endif()
foreach(lib gtest gmock)
    target_compile_options(${lib} PRIVATE $<$<CXX_COMPILER_ID:GNU,Clang>:-O0;${lines}>)
    if(ORVANTIS_SANITIZE)
        string(REGEX MATCH "^[a-z]+" sanitizer "${ORVANTIS_SANITIZE}")
        target_compile_options(${lib} PRIVATE -fsanitize=${sanitizer} -fno-omit-frame-pointer)
    endif()
endforeach()
include(GoogleTest)

# Windows programs built on Linux run through Wine. The wrapper knows the folder of the stand-in codec library.
if(WIN32 AND CMAKE_CROSSCOMPILING)
    configure_file("${PROJECT_SOURCE_DIR}/cmake/wine-run.in" "${CMAKE_BINARY_DIR}/wine-run"
        @ONLY FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
    set(CMAKE_CROSSCOMPILING_EMULATOR "${CMAKE_BINARY_DIR}/wine-run")
endif()

# Builds the programs labelled "concurrency", all that a run under ThreadSanitizer needs.
add_custom_target(concurrency_tests)

# What is tested is optimised; the tests themselves are quick to compile instead: without optimisation, and with the headers
# of the test framework and of the standard library compiled once.
set(test_options $<$<CXX_COMPILER_ID:GNU,Clang>:-Wno-sign-conversion;-O0;${lines}>
    ${orvantis_precompiled_options})
# A program, as its users are: compilers want them alike.
add_executable(orvantis_test_headers "${CMAKE_CURRENT_LIST_DIR}/test_headers.cpp")
set_target_properties(orvantis_test_headers PROPERTIES ORVANTIS_IS_TEST ON
    RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/test-headers")
target_link_libraries(orvantis_test_headers PRIVATE orvantis_options GTest::gtest GTest::gmock)
target_precompile_headers(orvantis_test_headers PRIVATE <gmock/gmock.h> <gtest/gtest.h>
    <algorithm> <array> <atomic> <chrono> <cmath> <condition_variable> <cstdint> <cstring> <filesystem> <fstream> <functional>
    <future> <map> <memory> <mutex> <numeric> <optional> <random> <span> <string> <string_view> <thread> <unordered_map> <utility>
    <vector>)
target_compile_options(orvantis_test_headers PRIVATE ${test_options})
# The tests of the tool, most of which run under Wine, read JSON.
if(WIN32 AND TARGET orvantis_json)
    target_link_libraries(orvantis_test_headers PRIVATE orvantis_json)
    target_precompile_headers(orvantis_test_headers PRIVATE <nlohmann/json.hpp>)
endif()

# Builds what the tests of every day need: all but the programs of the tests that are labelled "nightly", and packages.
add_custom_target(everyday)

# orvantis_nightly(test...): CTest tests that `./test.sh everything` runs, which .ci/nightly does, and `./test.sh` leaves out.
function(orvantis_nightly)
    set_property(TEST ${ARGN} APPEND PROPERTY LABELS nightly)
endfunction()

# Loaded or started by the tests of a library's users, which therefore have to run again when it changes.
define_property(TARGET PROPERTY ORVANTIS_LOADS BRIEF_DOCS "Targets that programs which link this one load or start")

# orvantis_add_fixture(NAME name TEST test COMMAND ...): files that tests read, made once for all builds by COMMAND, which does
# nothing when they are there. Tests ask for it by FIXTURES.
function(orvantis_add_fixture)
    cmake_parse_arguments(arg "" "NAME;TEST" "COMMAND" ${ARGN})
    add_test(NAME ${arg_TEST} COMMAND ${arg_COMMAND})
    # First of all: others wait for it.
    set_tests_properties(${arg_TEST} PROPERTIES FIXTURES_SETUP ${arg_NAME} TIMEOUT 900 COST 1000)
    orvantis_quick_fixture(${arg_NAME} ${arg_COMMAND})
endfunction()

# orvantis_unity_test(target source...): compiles the files of a test program several at a time, which halves their share of a
# build. A file that declares a name which a file ahead of it has as well, as anonymous namespaces allow, is compiled
# by itself: what stands at the margin and looks like a declaration is compared.
function(orvantis_unity_test target)
    orvantis_compile_quickly(${target})
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
        set(aliases "")
        foreach(line IN LISTS lines)
            if(line MATCHES "^TEST|^INSTANTIATE|^namespace|^using namespace|^using [A-Za-z_0-9:]+;|^template")
                continue()
            elseif(line MATCHES "^using ([A-Za-z_0-9]+ = .*);$")
                # The same said twice is no clash.
                set(alias "${CMAKE_MATCH_1}")
                if(NOT alias IN_LIST known)
                    string(REGEX MATCH "^[A-Za-z_0-9]+" name "${alias}")
                    list(APPEND own "${name}")
                    list(APPEND aliases "${alias}")
                endif()
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
            list(APPEND known ${own} ${aliases})
        endif()
    endforeach()
endfunction()

# orvantis_add_test(NAME name SOURCES ... [PIECE ...] [LIBRARIES ...] [LABELS ...] [LOADS target...] [DATA file...]
#                   [TIMEOUT seconds] [FIXTURES name] [PARTS number] [COST seconds] [APART filter] [QUICK_FILTER filter]
#                   [QUICK_WITHOUT filter] [QUICK_ALL | NOT_QUICK] [NIGHTLY | PORTABLE])
# A GoogleTest program and the CTest test <name> that runs it; with PARTS that many, <name>.1 and so on, which share its
# tests and may run side by side. All in one process, since its start is most of the time that a test takes under Wine.
# Tests that the GoogleTest filter APART names need a process of their own each; they are CTest tests
# <name>.<Suite>.<Test>. LOADS names targets that the tests start or load, DATA files that they read. What takes more than some
# seconds says so by COST: long ones start first. For the target `quick` QUICK_FILTER chooses from what takes long and
# QUICK_WITHOUT leaves out single long tests; QUICK_ALL leaves to `quick_all` what sees the plug-in from afar, as FIXTURES does,
# whose files have to be made, and NOT_QUICK leaves out what no edit of the plug-in can break. NIGHTLY: see orvantis_nightly;
# PORTABLE is that for Windows only, for code of ours that knows no system and is tested natively every day. PIECE: sources that
# see fewer or more headers of the plug-in than SOURCES, and for the target `quick` are compiled apart from these.
function(orvantis_add_test)
    cmake_parse_arguments(arg "NOT_QUICK;QUICK_ALL;NIGHTLY;PORTABLE" "NAME;TIMEOUT;FIXTURES;PARTS;COST;APART;QUICK_FILTER;QUICK_WITHOUT"
        "SOURCES;PIECE;LIBRARIES;LABELS;LOADS;DATA" ${ARGN})
    add_executable(${arg_NAME} ${arg_SOURCES} ${arg_PIECE})
    target_link_libraries(${arg_NAME} PRIVATE
        orvantis_options ${arg_LIBRARIES} orvantis_test_main GTest::gtest GTest::gmock)
    target_compile_options(${arg_NAME} PRIVATE ${test_options})
    set_target_properties(${arg_NAME} PROPERTIES ORVANTIS_IS_TEST ON)
    target_precompile_headers(${arg_NAME} REUSE_FROM orvantis_test_headers)
    orvantis_unity_test(${arg_NAME} ${arg_SOURCES} ${arg_PIECE})
    if(arg_PIECE AND ORVANTIS_QUICK)
        set_target_properties(${arg_NAME} PROPERTIES UNITY_BUILD_MODE GROUP)
        set_source_files_properties(${arg_SOURCES} PROPERTIES UNITY_GROUP "rest")
        set_source_files_properties(${arg_PIECE} PROPERTIES UNITY_GROUP "piece")
    endif()
    # Of inline functions the linker takes the first copy that it meets: that of what is tested, which is optimised (and
    # counted), and not the test's own.
    if(NOT WIN32 AND NOT ORVANTIS_EXCHANGEABLE)
        foreach(library orvantis_avi orvantis_audio orvantis_video orvantis_importer orvantis_avi_builder)
            if(library IN_LIST arg_LIBRARIES)
                target_link_options(${arg_NAME} PRIVATE
                    "SHELL:-Wl,--whole-archive $<TARGET_FILE:${library}> -Wl,--no-whole-archive")
            endif()
        endforeach()
    endif()
    foreach(library IN LISTS arg_LIBRARIES)
        if(TARGET ${library})
            get_target_property(loaded ${library} ORVANTIS_LOADS)
            if(loaded)
                list(APPEND arg_LOADS ${loaded})
            endif()
        endif()
    endforeach()
    if(arg_LOADS)
        add_dependencies(${arg_NAME} ${arg_LOADS})
    endif()
    if(NOT arg_TIMEOUT)
        set(arg_TIMEOUT 300)
    endif()
    set(properties TIMEOUT ${arg_TIMEOUT})
    if(arg_PORTABLE AND WIN32)
        set(arg_NIGHTLY ON)
    endif()
    if(NOT arg_NIGHTLY)
        add_dependencies(everyday ${arg_NAME})
    endif()
    if(arg_LABELS)
        list(APPEND properties LABELS "${arg_LABELS}")
    endif()
    if(arg_COST)
        list(APPEND properties COST ${arg_COST})
    endif()
    # Before CTest ends a test that hangs, it says itself where (see tests/support/main/).
    math(EXPR hang_seconds "${arg_TIMEOUT} * 9 / 10")
    # Brief: what CTest shows of a test that failed is then the failure, not hundreds of tests that passed.
    set(environment "ORVANTIS_TEST_HANG_SECONDS=${hang_seconds}" "GTEST_BRIEF=1")
    if("concurrency" IN_LIST arg_LABELS)
        # These take some five seconds and wait for nobody outside: a deadlock is seen long before the time is over.
        list(APPEND environment "ORVANTIS_TEST_IDLE_SECONDS=15")
    endif()
    if(ORVANTIS_SANITIZE STREQUAL "thread")
        list(APPEND environment "TSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tests/tsan.supp")
    elseif(ORVANTIS_SANITIZE MATCHES "address")
        # A tenth of the tests' time goes into the rest of each allocation's call stack.
        list(APPEND environment "ASAN_OPTIONS=malloc_context_size=8")
    endif()
    if("concurrency" IN_LIST arg_LABELS)
        add_dependencies(concurrency_tests ${arg_NAME})
    endif()
    if(arg_FIXTURES)
        list(APPEND properties FIXTURES_REQUIRED "${arg_FIXTURES}")
    endif()
    set(filter "")
    if(arg_APART)
        set(filter "--gtest_filter=-${arg_APART}")
        gtest_discover_tests(${arg_NAME}
            TEST_PREFIX "${arg_NAME}."
            TEST_FILTER "${arg_APART}"
            DISCOVERY_MODE PRE_TEST
            DISCOVERY_TIMEOUT 120
            PROPERTIES ${properties} ENVIRONMENT "${environment}")
    endif()
    if(NOT arg_PARTS)
        set(arg_PARTS 1)
    endif()
    foreach(part RANGE 1 ${arg_PARTS})
        set(name ${arg_NAME})
        if(arg_PARTS GREATER 1)
            set(name ${arg_NAME}.${part})
        endif()
        math(EXPR index "${part} - 1")
        set(shard "GTEST_TOTAL_SHARDS=${arg_PARTS}" "GTEST_SHARD_INDEX=${index}")
        add_test(NAME ${name} COMMAND ${arg_NAME} ${filter}
            "--gtest_output=xml:${CMAKE_BINARY_DIR}/test-results/${name}.xml")
        set_tests_properties(${name} PROPERTIES ${properties} ENVIRONMENT "${environment};${shard}")
        if(arg_NIGHTLY)
            orvantis_nightly(${name})
        endif()
        if(NOT arg_NOT_QUICK)
            if(arg_QUICK_ALL OR arg_FIXTURES)
                set(all ALL)
            else()
                set(all "")
            endif()
            orvantis_quick_test(${all} NAME ${name} PROGRAM ${arg_NAME} ENVIRONMENT ${environment} ${shard}
                FILTER "${arg_QUICK_FILTER}" APART "${arg_APART}" WITHOUT "${arg_QUICK_WITHOUT}" FIXTURES "${arg_FIXTURES}"
                DEPENDS ${arg_LOADS} ${arg_DATA})
        endif()
    endforeach()
endfunction()
