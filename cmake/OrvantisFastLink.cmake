# Cross builds by g++: programs are linked by lld, which takes a tenth of a second where the linker of binutils takes 3 to 25.
# The g++ of the distribution starts no other linker than its own, so clang is asked to; what it links was compiled by g++.
# The plug-in and other DLLs stay with g++'s own linker. Without clang and lld, so does all.

option(ORVANTIS_FAST_LINK "Cross builds by g++: link programs with lld, if it is there" ON)

if(ORVANTIS_FAST_LINK AND WIN32 AND CMAKE_CROSSCOMPILING AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    find_program(ORVANTIS_LINK_DRIVER clang++)
    find_program(ORVANTIS_LLD ld.lld)
    mark_as_advanced(ORVANTIS_LINK_DRIVER ORVANTIS_LLD)
    execute_process(COMMAND "${CMAKE_CXX_COMPILER}" -print-libgcc-file-name
        OUTPUT_VARIABLE libgcc OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    get_filename_component(libgcc "${libgcc}" DIRECTORY)
    if(ORVANTIS_LINK_DRIVER AND ORVANTIS_LLD)
        set(CMAKE_CXX_LINK_EXECUTABLE
            "${ORVANTIS_LINK_DRIVER} --target=${CMAKE_SYSTEM_PROCESSOR}-w64-mingw32 -fuse-ld=lld -pthread \"-B${libgcc}\" \"-L${libgcc}\" <FLAGS> <CMAKE_CXX_LINK_FLAGS> <LINK_FLAGS> <OBJECTS> -o <TARGET> <LINK_LIBRARIES>")
    endif()
endif()
