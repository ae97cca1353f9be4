# Compiler options shared by every target of the project.

add_library(orvantis_options INTERFACE)
# A file is included by its room: "video/video_info.h" from plugin/, "simhost/clip.h" from testbed/, "host/records.h".
target_include_directories(orvantis_options INTERFACE
    "${PROJECT_SOURCE_DIR}" "${PROJECT_SOURCE_DIR}/plugin" "${PROJECT_SOURCE_DIR}/testbed")
target_compile_features(orvantis_options INTERFACE cxx_std_20)

if(MSVC)
    target_compile_options(orvantis_options INTERFACE /W4 /WX /permissive- /utf-8 /Zc:__cplusplus /Zc:preprocessor)
    target_compile_definitions(orvantis_options INTERFACE _CRT_SECURE_NO_WARNINGS NOMINMAX)
else()
    target_compile_options(orvantis_options INTERFACE
        -Wall -Wextra -Wpedantic -Werror
        -Wconversion -Wsign-conversion -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual
        -Wcast-qual -Wformat=2 -Wundef -Wimplicit-fallthrough -Wextra-semi -Wnull-dereference)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        target_compile_options(orvantis_options INTERFACE -Wduplicated-cond -Wlogical-op)
        # A false positive of this compiler on std::string and std::vector in optimised builds.
        target_compile_options(orvantis_options INTERFACE -Wno-null-dereference)
    endif()
    target_compile_options(orvantis_options INTERFACE -fstack-protector-strong)
    # At link time too: there it makes the mingw-w64 drivers add the library with __stack_chk_fail.
    target_link_options(orvantis_options INTERFACE -fstack-protector-strong)
    target_compile_definitions(orvantis_options INTERFACE
        $<$<NOT:$<CONFIG:Release>>:_GLIBCXX_ASSERTIONS>)
endif()

if(WIN32)
    target_compile_definitions(orvantis_options INTERFACE UNICODE _UNICODE WIN32_LEAN_AND_MEAN)
endif()

# What ships must not tell where it was built, and two builds of one state in different folders must be equal. Not in the
# native builds: there, debuggers and sanitizer reports want the real paths.
if(WIN32 AND NOT MSVC)
    target_compile_options(orvantis_options INTERFACE
        "-ffile-prefix-map=${PROJECT_SOURCE_DIR}=." "-ffile-prefix-map=${PROJECT_BINARY_DIR}=./build")
    # The library's own assertions carry the paths of its headers.
    foreach(dir IN LISTS CMAKE_CXX_IMPLICIT_INCLUDE_DIRECTORIES)
        if(dir MATCHES "/c\\+\\+$")
            target_compile_options(orvantis_options INTERFACE "-fmacro-prefix-map=${dir}=c++")
        endif()
    endforeach()
endif()

# Only clang writes the debug information that lld turns into a PDB (see OrvantisReleaseFiles.cmake).
if(ORVANTIS_PDB)
    if(NOT WIN32 OR NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
        message(FATAL_ERROR "ORVANTIS_PDB needs a Windows build with clang and lld")
    endif()
    # No command lines and no folder of the build in the PDB: they would differ with the place of the build, and through
    # the PDB's identity so would the file that ships.
    # What ships has symbols; tests, which nobody debugs by a PDB, are compiled sooner without, and may have thread_local
    # variables: clang's records of those do not link. Files that are compiled together are found by "./source".
    target_compile_options(orvantis_options INTERFACE
        -fdebug-compilation-dir=. -ffile-prefix-map=source=. -ffile-prefix-map=./source=.
        $<IF:$<BOOL:$<TARGET_PROPERTY:ORVANTIS_IS_TEST>>,-g0,$<1:-g;-gcodeview;-gno-codeview-command-line>>)
    # Nor a search path of whoever builds, which the linker records.
    set_property(GLOBAL PROPERTY RULE_LAUNCH_LINK "\"${CMAKE_COMMAND}\" -E env --unset=LIBRARY_PATH")
    # Nor the names of lambdas, which clang makes of their file's path as it was opened: it gets relative ones.
    if(CMAKE_GENERATOR STREQUAL "Ninja")
        find_package(Python3 REQUIRED COMPONENTS Interpreter)
        file(CREATE_LINK "${PROJECT_SOURCE_DIR}" "${CMAKE_BINARY_DIR}/source" SYMBOLIC)
        foreach(language C CXX)
            list(PREPEND CMAKE_${language}_COMPILER_LAUNCHER "${Python3_EXECUTABLE}" -ISE
                "${PROJECT_SOURCE_DIR}/cmake/relative_paths.py" "${PROJECT_SOURCE_DIR}" "${CMAKE_BINARY_DIR}")
        endforeach()
    endif()
endif()

# orvantis_link_pdb(TARGET NAME): links with the symbols in <build>/symbols/NAME.pdb. What is linked records the PDB's bare
# name: debuggers look beside it and in their symbol paths. What the PDB records of the link is the same in every folder, so
# paths are given from the build folder, where Ninja runs the linker.
function(orvantis_link_pdb target name)
    file(MAKE_DIRECTORY "${CMAKE_BINARY_DIR}/symbols")
    target_link_options(${target} PRIVATE
        "-Wl,--pdb=symbols/${name}.pdb" "-Wl,-Xlink=-pdbaltpath:${name}.pdb" "-Wl,-Xlink=-pdbsourcepath:/orvantis")
endfunction()

# orvantis_exported_names(TARGET FILE): the target exports what the module definition file of the same folder says.
function(orvantis_exported_names target file)
    if(NOT ORVANTIS_PDB)
        target_sources(${target} PRIVATE "${file}")
        return()
    endif()
    configure_file("${file}" "${CMAKE_CURRENT_BINARY_DIR}/${file}" COPYONLY)
    file(RELATIVE_PATH path "${CMAKE_BINARY_DIR}" "${CMAKE_CURRENT_BINARY_DIR}/${file}")
    target_link_options(${target} PRIVATE "${path}")
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS "${CMAKE_CURRENT_BINARY_DIR}/${file}")
endfunction()

if(ORVANTIS_SANITIZE)
    set(sanitize -fsanitize=${ORVANTIS_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_compile_options(orvantis_options INTERFACE ${sanitize})
    target_link_options(orvantis_options INTERFACE ${sanitize})
    # In what tests call, not in the tests themselves, where it takes a third of the time that they are compiled in.
    if(ORVANTIS_SANITIZE MATCHES "undefined")
        target_compile_options(orvantis_options INTERFACE
            $<$<BOOL:$<TARGET_PROPERTY:ORVANTIS_IS_TEST>>:-fno-sanitize=undefined,float-cast-overflow>)
    endif()
endif()

if(ORVANTIS_COVERAGE)
    target_link_options(orvantis_options INTERFACE -fprofile-instr-generate)
endif()

if(NOT WIN32)
    find_package(Threads REQUIRED)
    target_link_libraries(orvantis_options INTERFACE Threads::Threads ${CMAKE_DL_LIBS})
endif()

# Lint wants the single files.
option(ORVANTIS_UNITY "Compile test equipment, and under a sanitizer all libraries, several files at a time" ON)

# ./mutate.sh exchanges one file of a program.
option(ORVANTIS_EXCHANGEABLE "Compile and link each file of the libraries for itself in a quick build" OFF)

# The build that is to answer quickly reads the standard library's headers once for all libraries. That no file forgets to
# include one, the other builds see.
if(ORVANTIS_QUICK AND NOT ORVANTIS_COVERAGE AND CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    add_library(orvantis_standard_headers OBJECT "${CMAKE_CURRENT_LIST_DIR}/standard_headers.cpp")
    target_link_libraries(orvantis_standard_headers PRIVATE orvantis_options)
    target_precompile_headers(orvantis_standard_headers PRIVATE
        <algorithm> <array> <atomic> <chrono> <condition_variable> <cstdint> <cstring> <functional> <future> <memory> <mutex>
        <optional> <span> <string> <string_view> <thread> <unordered_map> <utility> <vector>)
    target_compile_options(orvantis_standard_headers PRIVATE "SHELL:-Xclang -fno-pch-timestamp")
endif()

# orvantis_add_library(NAME SOURCES [WIN32_SOURCES ...] [POSIX_SOURCES ...] [LIBRARIES ...])
# A static library of one folder. WIN32_SOURCES are the files that talk to Windows; POSIX_SOURCES are their twins,
# which exist for the native test builds only.
function(orvantis_add_library name)
    cmake_parse_arguments(arg "" "" "SOURCES;WIN32_SOURCES;POSIX_SOURCES;LIBRARIES" ${ARGN})
    add_library(${name} STATIC ${arg_SOURCES})
    if(WIN32)
        target_sources(${name} PRIVATE ${arg_WIN32_SOURCES})
    else()
        target_sources(${name} PRIVATE ${arg_POSIX_SOURCES})
    endif()
    target_link_libraries(${name} PUBLIC orvantis_options ${arg_LIBRARIES})
    # Where a sanitizer watches or an answer is to come quickly, a folder is compiled as few pieces: headers once, which is
    # half of the time.
    if((ORVANTIS_SANITIZE OR (ORVANTIS_QUICK AND NOT ORVANTIS_COVERAGE AND NOT ORVANTIS_EXCHANGEABLE))
       AND ORVANTIS_UNITY AND NOT ORVANTIS_FUZZ)
        set_target_properties(${name} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 6)
    endif()
endfunction()

# orvantis_read_headers_once(NAME...): for libraries that are edited.
function(orvantis_read_headers_once)
    if(TARGET orvantis_standard_headers)
        foreach(name IN LISTS ARGN)
            target_precompile_headers(${name} REUSE_FROM orvantis_standard_headers)
            target_compile_options(${name} PRIVATE "SHELL:-Xclang -fno-pch-timestamp")
        endforeach()
    endif()
endfunction()

# By these a compiler cache tells whether a precompiled header is still the same: for every target that has or reuses one.
set(orvantis_precompiled_options
    $<$<CXX_COMPILER_ID:GNU>:-fpch-preprocess>
    "$<$<CXX_COMPILER_ID:Clang>:SHELL:-Xclang -fno-pch-timestamp>")

# Test equipment is compiled several files at a time, which halves its share of a build; where a sanitizer watches, also
# without optimisation, which halves it once more.
function(orvantis_compile_quickly name)
    if(ORVANTIS_UNITY)
        set_target_properties(${name} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 16)
    endif()
    if(ORVANTIS_SANITIZE AND NOT ORVANTIS_FUZZ)
        target_compile_options(${name} PRIVATE -O0)
    endif()
endfunction()

# orvantis_compile_as_test(library): what only tests use is compiled like them (see OrvantisTesting.cmake), where there are tests.
function(orvantis_compile_as_test library)
    if(TARGET orvantis_test_headers)
        set_target_properties(${library} PROPERTIES ORVANTIS_IS_TEST ON)
        target_compile_options(${library} PRIVATE ${test_options})
        target_precompile_headers(${library} REUSE_FROM orvantis_test_headers)
        # g++ takes compiled headers only where what they were compiled with is defined.
        foreach(framework gtest gmock)
            target_compile_options(${library} PRIVATE $<TARGET_PROPERTY:${framework},INTERFACE_COMPILE_OPTIONS>)
        endforeach()
        # Compiled headers serve the kind of code that they were compiled to, and test programs are position-independent ones.
        if(NOT WIN32)
            set_target_properties(${library} PROPERTIES POSITION_INDEPENDENT_CODE OFF)
            target_compile_options(${library} PRIVATE -fPIE)
        endif()
        if(ORVANTIS_UNITY)
            set_target_properties(${library} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 16)
        endif()
    endif()
endfunction()
