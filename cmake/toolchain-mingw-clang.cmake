# 64-bit Windows with clang on the headers and libraries of mingw-w64 g++ (posix thread model). Releases are
# made with it, because lld writes the symbols that Windows debuggers read. Version 16 is the first whose symbols can be
# kept free of command lines, which would make each build folder's files differ.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(triple x86_64-w64-mingw32)
execute_process(COMMAND ${triple}-g++-posix -print-libgcc-file-name
    OUTPUT_VARIABLE libgcc OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
get_filename_component(gcc ${libgcc} DIRECTORY)
set(CMAKE_C_COMPILER clang-16)
set(CMAKE_CXX_COMPILER clang++-16)
set(CMAKE_C_COMPILER_TARGET ${triple})
set(CMAKE_CXX_COMPILER_TARGET ${triple})
# The other strip would put a date of its own in the place of the linker's.
set(CMAKE_STRIP llvm-strip)
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
# Brepro: in the place of the time, a number made of the contents. Equal sources give equal bytes, and symbol stores tell
# builds apart by it.
foreach(kind EXE SHARED MODULE)
    set(CMAKE_${kind}_LINKER_FLAGS_INIT "-static -pthread -fuse-ld=lld-16 -B${gcc} -L${gcc} -Wl,-Xlink=-Brepro")
endforeach()
