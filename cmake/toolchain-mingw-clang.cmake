# 64-bit Windows with clang on the headers and libraries of mingw-w64 g++ (posix thread model): the second compiler.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(triple x86_64-w64-mingw32)
execute_process(COMMAND ${triple}-g++-posix -print-libgcc-file-name
    OUTPUT_VARIABLE libgcc OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
get_filename_component(gcc ${libgcc} DIRECTORY)
set(CMAKE_C_COMPILER clang)
set(CMAKE_CXX_COMPILER clang++)
set(CMAKE_C_COMPILER_TARGET ${triple})
set(CMAKE_CXX_COMPILER_TARGET ${triple})
set(CMAKE_RC_COMPILER ${triple}-windres)
set(CMAKE_FIND_ROOT_PATH /usr/${triple})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(CMAKE_C_FLAGS_INIT "-nostdlibinc -isystem /usr/${triple}/include -Wno-unused-command-line-argument")
# g++ tells its headers that type comparison lies in its library on this system; without being told, clang brings a second
# definition of it, which the linker refuses.
set(CMAKE_CXX_FLAGS_INIT "-D__GXX_TYPEINFO_EQUALITY_INLINE=0 -femulated-tls -nostdinc++ -nostdlibinc -isystem ${gcc}/include/c++ -isystem ${gcc}/include/c++/${triple} -isystem ${gcc}/include/c++/backward -isystem /usr/${triple}/include -Wno-unused-command-line-argument")
foreach(kind EXE SHARED MODULE)
    set(CMAKE_${kind}_LINKER_FLAGS_INIT "-static -pthread -fuse-ld=lld -B${gcc} -L${gcc} -Wl,--no-insert-timestamp")
endforeach()
